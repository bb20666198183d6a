#pragma once

#include "numeric/base/dispatch.h"

namespace numeric {

/// A line of labels for markBorders has one zero byte before its first pixel and this many behind
/// its last.
inline constexpr int kBorderLineSlack = 65;

/// Inner loops of the watershed.
struct WatershedRows {
    /// Writes 255 over the labels of the middle line where a neighbour across a side (4 neighbours)
    /// or also across a corner (8 neighbours) carries a greater one. `out` holds that line already.
    /// Each pointer is to the line's first pixel.
    void (*markBordersAcrossSides)(const unsigned char* above, const unsigned char* line,
                                   const unsigned char* below, unsigned char* out, int width);
    void (*markBorders)(const unsigned char* above, const unsigned char* line,
                        const unsigned char* below, unsigned char* out, int width);
};

extern const RowBuilds<WatershedRows> kWatershedBuilds;

}  // namespace numeric
