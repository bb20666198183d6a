#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/media/MediaSource.h"

namespace render {

/// A choice of frames as a user writes it: "1,5,10-20:2, -5, -10--5, 100-". Single frames, ranges
/// with or without a step, ranges open at the end; frame numbers may be negative.
class FrameList {
public:
    /// Throws UsageError naming the entry that cannot be read and what is valid.
    explicit FrameList(const std::string& text);

    /// The chosen ones of the frames there are (ascending), each once, ascending. A range takes
    /// what exists of it. Throws UsageError when an entry chooses nothing at all.
    std::vector<std::int64_t> chosenFrom(const std::vector<std::int64_t>& available) const;

private:
    struct Entry {
        std::string text;
        std::int64_t first;
        std::int64_t last;
        std::int64_t step;
        bool contains(std::int64_t frame) const;
    };
    std::vector<Entry> m_entries;
};

/// The frames of a source that a user's list chooses; an empty text chooses all. Throws UsageError.
std::vector<std::int64_t> chosenFrames(const std::string& list, const media::MediaSource& source);

}  // namespace render
