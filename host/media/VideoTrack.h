#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace media {

struct Ratio {
    int numerator = 0;  ///< 0: unknown
    int denominator = 1;
};

/// What the video that frames come from says about them beside their pixels.
struct VideoTrack {
    std::string path;                      ///< where its sound is; empty: it has none
    Ratio timeBase;                        ///< seconds of one unit of the times below
    std::vector<std::int64_t> timeStamps;  ///< when each frame is shown, from the file's start
    std::int64_t lastDuration = 0;         ///< how long the last frame is shown
    Ratio frameRate;                       ///< frames a second, on average
    Ratio pixelAspect;                     ///< width to height of a pixel, of the upright picture
    int matrix = 0;  ///< these three: code points of ITU-T H.273, 2 unspecified
    int primaries = 2;
    int transfer = 2;
    double startSeconds = 0;  ///< of the file, on the clock of its tracks
};

}  // namespace media
