#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "host/imaging/Areas.h"

namespace render {

/// How every table of objects begins, blanks and line ends left out.
extern const char* const kObjectTableBeginning;

/// The objects of the frames of a run, as CSV: numbers with a point, lengths in pixels, the middle
/// of the first pixel at 0, 0. Any thread may add frames; reading is for when they are done.
class ObjectTable {
public:
    void add(std::int64_t frame, std::string input, std::vector<Area> objects, int leftOut);

    /// How many objects a frame has, -1 for one that was not added.
    int objectsOf(std::int64_t frame) const;

    /// A row for each frame.
    std::string frames() const;

    /// A row for each object.
    std::string objects() const;

private:
    struct Frame {
        std::string input;
        std::vector<Area> objects;
        int leftOut;
    };
    std::mutex m_mutex;
    std::map<std::int64_t, Frame> m_frames;
};

}  // namespace render
