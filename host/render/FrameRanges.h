#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace render {

/// Frames that follow one another in a list of frames.
struct FrameRange {
    std::int64_t first;
    std::int64_t last;

    std::string text() const;  ///< "frame 3", "frames 4 to 6"
};

/// The ranges that some of all frames make; both ascending.
std::vector<FrameRange> rangesOf(const std::vector<std::int64_t>& some,
                                 const std::vector<std::int64_t>& all);

/// "frames 3 to 5, 7 and 9 to 12", or the first of them and how many more there are.
std::string rangesText(const std::vector<FrameRange>& ranges);

}  // namespace render
