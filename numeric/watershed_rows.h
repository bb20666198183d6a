#pragma once

#include <cstdint>

#include "numeric/dispatch.h"

namespace numeric {

/// What a key holds before a pixel is flooded: its relief below this mark. See watershed.cpp.
inline constexpr std::uint32_t kUnsetKey = 0xFFFFFF00u;
/// Keys from here up are of pixels that are not flooded.
inline constexpr std::uint32_t kNotFlooded = 0x80000000u;

/// Inner loops of the watershed, each over one row of width pixels.
struct WatershedRows {
    /// keys: the label of a labelled pixel, kUnsetKey | relief of any other. Returns how many are
    /// not labelled.
    int (*keysOf)(const unsigned char* marker, const unsigned char* relief, std::uint32_t* keys,
                  int width);
    /// room: not 0 where a labelled pixel has one without a label among its eight neighbours. The
    /// three marker rows can be read from -1 to width.
    void (*room)(const unsigned char* above, const unsigned char* row, const unsigned char* below,
                 unsigned char* room, int width);
    /// Labels of the flooded pixels; the others keep what the marker holds.
    void (*labelsOf)(const std::uint32_t* keys, unsigned char* marker, int width);
    /// out: 255 where one of the 4 or 8 neighbours carries a greater label, else the label. The
    /// three label rows can be read from -1 to width.
    void (*borders4)(const unsigned char* above, const unsigned char* row,
                     const unsigned char* below, unsigned char* out, int width);
    void (*borders8)(const unsigned char* above, const unsigned char* row,
                     const unsigned char* below, unsigned char* out, int width);
};

extern const RowBuilds<WatershedRows> kWatershedBuilds;

}  // namespace numeric
