#pragma once

#include <cstdint>

#include "numeric/base/dispatch.h"

namespace numeric {

/// Vertical distances are capped here on the way to a 16-bit square: from this distance on a pixel
/// counts as far away, and no near search can decide it.
inline constexpr int kFarDistance = 181;
/// How many columns to either side the near search looks at most; beyond it the far search is
/// faster.
inline constexpr int kNearReach = 60;
/// For a block of pixels whose largest distance in the row before is not known.
inline constexpr unsigned char kUnknownReach = 255;
/// The entries that vector loops may touch past the end of a line in the scratch.
inline constexpr int kLineOverrun = 64;

/// Planes up to this width and height have squared distances that fit the far search in integers.
inline constexpr int kLargestIntegerSide = 32768;

/// Inner loops of the distance transform, each over one row of width pixels.
///
/// Counts are vertical distances to the next zero pixel on one side: in bytes, where 255 stands for
/// all larger ones, or in ints, where the number called none stands for a column without a zero
/// pixel on that side; it is at least the height and at least kFarDistance. Lines lie in the
/// scratch and may be touched kLineOverrun entries beyond their end.
struct DistanceRows {
    /// counts = 0 at a zero pixel, else one more than before. before == counts is allowed. Goes
    /// from right to left: for rows taken from the last to the first, the way back through memory
    /// is as fast as the way forth only without jumps.
    void (*countBytes)(const unsigned char* src, const unsigned char* before, unsigned char* counts,
                       int width);
    void (*countInts)(const unsigned char* src, const std::int32_t* before, std::int32_t* counts,
                      int width, int none);

    /// Takes the line of counts upwards one row down and squares the smaller of both directions'
    /// counts for nearRow.
    void (*squareBytes)(unsigned char* above, const unsigned char* below, std::int16_t* nearSquares,
                        int width);
    /// The same for nearRow and farRow both.
    void (*squareInts)(std::int32_t* above, const std::int32_t* below, std::int16_t* nearSquares,
                       double* farSquares, int width, int none);

    /// The distances of a row from its line of squared vertical ones, which has kNearReach entries
    /// of INT16_MAX before and past it. False, and any contents of dst, if some pixel's nearest
    /// zero is too far away to be certain of. reaches: for each block of pixels, at least two, its
    /// largest distance in the row above, rounded up, or kUnknownReach; becomes that of this row.
    bool (*nearRow)(const std::int16_t* nearSquares, unsigned char* reaches, float* dst, int width);
    /// The distances of a row from the line of squareInts, where some zero exists in the plane.
    /// nearest: a line of width + 1 ints.
    void (*farRow)(const double* farSquares, std::int32_t* nearest, float* dst, int width,
                   int none);
};

extern const RowBuilds<DistanceRows> kDistanceBuilds;
extern const SlotTable<DistanceRows> kDistanceSlots;

}  // namespace numeric
