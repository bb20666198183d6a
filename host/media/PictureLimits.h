#pragma once

#include <cstdint>
#include <string>

namespace media {

/// What a frame may measure that is read, and pages may take that are written to one file.
/// docs/limits.md has all limits.
struct PictureLimits {
    int side = 32768;
    std::int64_t pixels = std::int64_t{1} << 28;
    std::int64_t pageBytes = std::int64_t{1} << 31;  ///< their offsets have 32 bits
};
constexpr PictureLimits kPictureLimits;

/// Why a frame of this size is not read, and what to do; empty when it is.
std::string refusalOfSize(int width, int height);

}  // namespace media
