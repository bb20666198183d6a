#pragma once

#include <cstdint>

#include "numeric/base/dispatch.h"
#include "numeric/base/neighbours.h"

namespace numeric {

/// A pixel's distance (arrival.h) and label in one number, distance first: (distance << 8) + label.
/// Seeds have distance 0.
using TileKey = std::int32_t;
inline constexpr int kTileLabelBits = 8;
/// No pixel, or one that is not flooded: neither changes nor is anything reached from it. Adding
/// the largest step to it does not overflow.
inline constexpr TileKey kWallKey = 0x7F000000;
/// A free pixel that has not been reached.
inline constexpr TileKey kUnreachedKey = 0x7E000000;
/// Distances of this key and above, but below kUnreachedKey, are too long to be counted.
inline constexpr TileKey kLongTileKey = kUnreachedKey - (1 << 20);

inline constexpr int kTileSide = 16;

/// The keys of a square of the plane. A tile has the size of a few vectors, so that columns too can
/// be worked on side by side: turned over, its columns are rows.
struct alignas(64) Tile {
    TileKey keys[kTileSide * kTileSide];  // row by row
    TileKey left[kTileSide];              // the first column once more, and the last
    TileKey right[kTileSide];
};

/// The first and the last of the rows and columns that hold a free pixel of the tile.
struct TileBounds {
    std::uint8_t top, bottom, left, right;
};

/// The tiles around a tile; its neighbours across a side first.
struct TilesAround {
    const Tile* above;
    const Tile* left;
    const Tile* right;
    const Tile* below;
    const Tile* aboveLeft;
    const Tile* aboveRight;
    const Tile* belowLeft;
    const Tile* belowRight;
};

/// A bit for each pixel of a tile's rows, zero where there is none.
struct TileMasks {
    std::uint16_t free[kTileSide];
    std::uint16_t low[kTileSide];  // free or a seed; all else is wall
};

/// Parts of a tile, as bits: its outer lines, and anything else.
enum TilePart : unsigned { kAbove = 1, kLeft = 2, kRight = 4, kBelow = 8, kInside = 16 };

/// The part of the marker that a tile stands for: at most kTileSide pixels wide and high.
struct TilePixels {
    unsigned char* marker;
    int markerStep;
    int width;
    int height;
};

struct Relaxed {
    unsigned changed;  // the parts (TilePart) in which any key has, kInside always among them, or 0
    int rounds;
    int reached;  // keys of the tile that now are distances
};

struct TileRows {
    /// Which of its neighbours a pixel is reached from.
    Neighbours neighbours;
    /// Whether corridors of that width, on average, with so many pixels for each seed are so long
    /// that the queue is faster. Measured with the bench's corridors, 2 to 20 pixels wide and with
    /// 300 pixels for a seed to a million.
    bool (*isLong)(double width, double pixelsOfSeed);
    /// Writes all keys of a tile. Returns whether any is a seed.
    bool (*fill)(const TilePixels& pixels, const TileMasks& masks, Tile* tile);
    /// Lowers keys to what arrives, down and up, then right and left, in so many rounds at most or
    /// until one changes nothing.
    Relaxed (*relax)(Tile* tile, const TilesAround& around, const TileBounds& bounds, int rounds);
    /// About so many pixels the queue floods in the time of a round: for the limit of work.
    int pixelsPerRound;
    /// Replaces keys that are not what arrives from the neighbours. Returns the parts in which any
    /// has changed, as above. Sets *isLong if any distance is too long.
    unsigned (*settle)(Tile* tile, const TilesAround& around, const TileBounds& bounds,
                       bool* isLong);
    /// The sides (TilePart) across which something smaller arrives than is there.
    unsigned (*reach)(const Tile& tile, const TilesAround& around);
    /// Whether any key beside the tile is a distance.
    bool (*isTouched)(const TilesAround& around);
    /// Writes the labels of the free pixels, highLabel where none arrived.
    void (*readLabels)(const Tile& tile, const TileBounds& bounds, unsigned char highLabel,
                       const TilePixels& pixels);
};

extern const RowBuilds<TileRows> kMarchingTileBuilds;
extern const RowBuilds<TileRows> kChessboardTileBuilds;
extern const RowBuilds<TileRows> kCityBlockTileBuilds;
extern const SlotTable<TileRows> kMarchingTileSlots;
extern const SlotTable<TileRows> kTileSlots8;
extern const SlotTable<TileRows> kTileSlots4;

}  // namespace numeric
