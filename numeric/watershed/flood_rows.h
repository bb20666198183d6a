#pragma once

#include <cstddef>
#include <cstdint>

#include "numeric/base/dispatch.h"

namespace numeric {

/// What a flood knows of a pixel: its label once that is final, kFreeKey + its relief as long as
/// nothing has reached it, and in between what the flood wants. The rim is no pixel.
using FloodKey = std::int16_t;
inline constexpr FloodKey kFreeKey = 0x0400;
inline constexpr FloodKey kRimKey = -1;

/// Keys that may be read behind the rim's last one.
inline constexpr int kFloodKeySlack = 16;

/// Counts of a plane's free pixels: those without a label.
struct FreePixels {
    std::int64_t count;
    int highest;  // the highest level of one, -1 if there is none
};

/// Inner loops over all pixels of a flood.
struct FloodRows {
    /// Makes a row's keys from its relief and its marker, and extends *free.
    void (*prepare)(const unsigned char* relief, const unsigned char* marker, int width,
                    FloodKey* keys, FreePixels* free);
    /// Adds the seeds of these levels that have a free pixel among their eight neighbours to the
    /// lists, one for each level. keys is the row's first, among rows at that stride; pixel is its
    /// number.
    void (*listSeeds)(const FloodKey* keys, std::ptrdiff_t stride, const unsigned char* relief,
                      int width, int firstLevel, int lastLevel, int pixel, int** listEnds);
    /// Writes the labels, 0 for pixels that are still free.
    void (*readLabels)(const FloodKey* keys, unsigned char* marker, int width);
};

extern const RowBuilds<FloodRows> kFloodBuilds;

}  // namespace numeric
