#pragma once

#include <string>
#include <vector>

#include "host/media/VideoTrack.h"

namespace media {

/// How a video is written.
struct VideoOptions {
    std::string codec;  ///< one of videoCodecNames(); empty: as the suffix says
    int quality = -1;   ///< constant rate factor, 0 best to 51 smallest; -1: as the codec says
    Ratio frameRate;    ///< unknown: as the source says, else 25

    bool isAnySet() const { return !codec.empty() || quality >= 0 || frameRate.numerator > 0; }
};

std::vector<std::string> videoCodecNames();

/// Frames a second from a text such as 24, 29.97 or 30000/1001. False when it is none, or not more
/// than 0 and at most 1000.
bool parseFrameRate(const std::string& text, Ratio& rate);

}  // namespace media
