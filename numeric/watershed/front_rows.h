#pragma once

#include <cstddef>
#include <cstdint>

#include "numeric/base/dispatch.h"
#include "numeric/watershed/watershed_rows.h"

namespace numeric {

// Keys of the Euclidean flood. A pixel's neighbours may take its label if it is a key by itself;
// with one of these bits it is not to be seen yet.

/// A seed whose level has not come.
inline constexpr FloodKey kHiddenSeed = 0x0200;
/// A pixel of the first ring; one that is reached over a corner only; one beside open pixels.
inline constexpr FloodKey kFirstRing = 0x1000;
inline constexpr FloodKey kOverCorner = 0x0100;
inline constexpr FloodKey kBesideOpen = 0x0200;
/// A pixel of the band, which has no label yet.
inline constexpr FloodKey kInBand = 0x2000;

/// Pixels that lie anywhere in the plane, at most kMost. Meanwhile the surroundings of as many
/// others are fetched, those that are to come.
struct Front {
    static constexpr int kMost = 128;
    const int* begin;
    int count;
    const int* next;
    int nextCount;
};

/// Inner loops over the pixels of a front. Keys and distances are planes with a rim, at the same
/// stride; a pixel is its number in either.
///
/// A front's surroundings are copied side by side before anything is worked out, and nothing is
/// written into the planes: a vector of neighbours, one of which has just been written, would have
/// to wait until that is in the cache.
struct FrontRows {
    /// How each pixel, free and of the level, is reached over what is settled: the key of the first
    /// ring, or 0 where nothing reaches it. A side comes before any corner, then the smaller label.
    void (*reach)(const FloodKey* keys, std::ptrdiff_t stride, const Front& front, int level,
                  FloodKey* reached);
    /// The neighbours that are open: free, and not above the level. Bits in kNeighbourOrder.
    void (*findOpen)(const FloodKey* keys, std::ptrdiff_t stride, const Front& front, int level,
                     std::uint16_t* open);
    /// The distance at which each pixel is reached first (arrival.h), and the smallest of the
    /// labels that arrive then.
    void (*arrive)(const FloodKey* keys, const std::uint16_t* distances, std::ptrdiff_t stride,
                   const Front& front, std::uint16_t* arrivals, FloodKey* labels);
};

/// Columns and rows from a pixel to its neighbours.
struct Offset {
    int column, row;
};
inline constexpr Offset kNeighbourOrder[] = {{0, -1},  {-1, 0}, {1, 0},  {0, 1},
                                             {-1, -1}, {1, -1}, {-1, 1}, {1, 1}};

extern const RowBuilds<FrontRows> kFrontBuilds;
extern const SlotTable<FrontRows> kFrontSlots;

}  // namespace numeric
