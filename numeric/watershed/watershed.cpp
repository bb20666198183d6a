#include <algorithm>
#include <cstdint>
#include <limits>

#include "numeric/base/checks.h"
#include "numeric/watershed/flood.h"

// The watershed: labels grow from their seeds over the relief, level by level, inside a level in
// the order of their distance. That order defines one result, whatever finds it:
//
//   two levels      agreed_areas.cpp    areas whose seeds agree on a label need no flood
//                   flood_tiles.cpp     tiles of 16 x 16 keys, visited while their keys still fall,
//                                       row by row and column by column (tile_rows.cpp)
//   any relief      flood_steps.cpp     a queue for each level (flood_field.cpp), ring by ring of
//                   flood_marching.cpp  pixels that are a step away, or within a span of distances,
//                                       a front of them at once (front_rows.cpp)
//
//      planes             tiles of a band, made where pixels are free     lists of the queue
//   +------------+        +----+----+                                      level 0  seeds|waiting
//   |   seeds    |  --->  |    |    |   keys: distance and label;          level 1  seeds|waiting
//   |   relief   |        +----+----+   turned over, columns are rows too  ...
//   +------------+        |    |    |
//
// Thin lines, and corridors with few seeds, are left to the queue at once. Tiles give up where
// paths are too long to be counted, or the work is more than that of the queue, which then starts
// anew. Borders come last.
namespace numeric {

const SlotTable<WatershedRows> kWatershedSlots(kWatershedBuilds);
const SlotTable<FrontRows> kFrontSlots(kFrontBuilds);
const SlotTable<TileRows> kMarchingTileSlots(kMarchingTileBuilds);
const SlotTable<TileRows> kTileSlots8(kChessboardTileBuilds);
const SlotTable<TileRows> kTileSlots4(kCityBlockTileBuilds);

namespace {

constexpr int kByStepsFlag = 1;
constexpr int kByDistanceFlag = 2;
constexpr int kBordersAcrossSidesFlag = 64;
constexpr int kBordersFlag = 128;

constexpr int kEuclidean = 2;
constexpr int kLargestNorm = 3;

std::int64_t scratchBytes(int width, int height) {
    const std::int64_t w = width;
    const std::int64_t h = height;
    if (w * h > std::numeric_limits<int>::max()) return w * h;  // enough; the rest could overflow
    const std::int64_t roundedWidth = (w + 31) / 32 * 32;
    return std::max((2 * h + 2) * roundedWidth + 4 * roundedWidth * h + h + 66,
                    12 * w * h + 36 + (w + 2) * (h + 2));
}

bool areFlagsValid(int flags) {
    const int order = flags & (kByStepsFlag | kByDistanceFlag);
    const int borders = flags & (kBordersAcrossSidesFlag | kBordersFlag);
    const bool oneOrder = order == kByStepsFlag || order == kByDistanceFlag;
    const bool bothBorders = borders == (kBordersAcrossSidesFlag | kBordersFlag);
    return oneOrder && !bothBorders && flags == (order | borders);
}

/// Draws the borders in place. Three lines keep the labels from before drawing.
void drawBorders(PlaneView<unsigned char> marker, decltype(WatershedRows::markBorders8) markRow,
                 unsigned char* scratch) {
    const int width = marker.width;
    const int lineBytes = 1 + width + kBorderLineSlack;
    unsigned char* above = scratch + 1;
    unsigned char* line = above + lineBytes;
    unsigned char* below = line + lineBytes;
    std::fill_n(scratch, 3 * lineBytes, static_cast<unsigned char>(0));
    std::copy_n(marker.row(0), width, line);
    for (int y = 0; y < marker.height; ++y) {
        if (y + 1 < marker.height)
            std::copy_n(marker.row(y + 1), width, below);
        else
            std::fill_n(below, width, static_cast<unsigned char>(0));
        markRow(above, line, below, marker.row(y), width);
        std::swap(above, line);
        std::swap(line, below);
    }
}

}  // namespace

KernelStatus watershedScratchSize(int width, int height, int* size) {
    return reportScratchSize(width, height, size, scratchBytes);
}

KernelStatus watershed(const unsigned char* relief, int reliefStep, unsigned char* marker,
                       int markerStep, int width, int height, int norm, int flags,
                       unsigned char* scratch) {
    int size = 0;
    const KernelStatus status = firstError(
        {checkPointers({relief, marker, scratch}), watershedScratchSize(width, height, &size),
         checkByteSteps(width, {reliefStep, markerStep}),
         checkArgument(norm >= 0 && norm <= kLargestNorm), checkArgument(areFlagsValid(flags))});
    if (status != Success) return status;

    const FloodPlanes planes{{relief, reliefStep, width, height},
                             {marker, markerStep, width, height}};
    const bool isMarching = norm >= kEuclidean && (flags & kByDistanceFlag) != 0;
    const Neighbours neighbours = neighboursOf(norm);
    const WatershedRows& rows = kWatershedSlots.selected();
    const TileRows& tileRows = isMarching                        ? kMarchingTileSlots.selected()
                               : neighbours == Neighbours::Eight ? kTileSlots8.selected()
                                                                 : kTileSlots4.selected();
    if (!floodByTiles(planes, rows, tileRows, scratch, size)) {
        if (isMarching)
            floodByMarching(planes, rows, kFrontSlots.selected(), scratch);
        else
            floodBySteps(planes, rows, neighbours, scratch);
    }
    if ((flags & kBordersFlag) != 0) drawBorders(planes.marker, rows.markBorders8, scratch);
    if ((flags & kBordersAcrossSidesFlag) != 0)
        drawBorders(planes.marker, rows.markBorders4, scratch);
    return Success;
}

}  // namespace numeric
