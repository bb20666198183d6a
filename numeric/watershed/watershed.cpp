#include <algorithm>
#include <cstdint>
#include <limits>

#include "numeric/base/checks.h"
#include "numeric/base/scratch.h"
#include "numeric/watershed/flood.h"
#include "numeric/watershed/flood_tiles.h"
#include "numeric/watershed/free_rows.h"
#include "numeric/watershed/step_sweeps.h"
#include "numeric/watershed/watershed_rows.h"

namespace numeric {
namespace {

const SlotTable<FloodRows> kFloodRows(kFloodBuilds);
const SlotTable<FreeRows> kFreeRows(kFreeBuilds);
const SlotTable<TileRows> kTileRows(kTileBuilds);
const SlotTable<WatershedRows> kWatershedRows(kWatershedBuilds);

constexpr int kByStepsFlag = 1;
constexpr int kByDistanceFlag = 2;
constexpr int kBordersAcrossSidesFlag = 64;
constexpr int kBordersFlag = 128;

constexpr int kCityBlock = 1;
constexpr int kEuclidean = 2;
constexpr int kLargestNorm = 3;

std::int64_t scratchBytes(int width, int height) {
    const std::int64_t w = width;
    const std::int64_t h = height;
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
void drawBorders(PlaneView<unsigned char> marker, decltype(WatershedRows::markBorders) markRow,
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
    if (!size) return NullPointer;
    const KernelStatus status = checkSize(width, height);
    if (status != Success) return status;
    // The formula itself would overflow for sides near the largest int.
    if (std::int64_t{width} * height > std::numeric_limits<int>::max()) return BadSize;
    const std::int64_t bytes = scratchBytes(width, height);
    if (bytes > std::numeric_limits<int>::max()) return BadSize;
    *size = static_cast<int>(bytes);
    return Success;
}

KernelStatus watershed(const unsigned char* relief, int reliefStep, unsigned char* marker,
                       int markerStep, int width, int height, int norm, int flags,
                       unsigned char* scratch) {
    if (!relief || !marker || !scratch) return NullPointer;
    int size = 0;
    const KernelStatus status = firstError(watershedScratchSize(width, height, &size),
                                           checkByteSteps(width, {reliefStep, markerStep}));
    if (status != Success) return status;
    if (norm < 0 || norm > kLargestNorm || !areFlagsValid(flags)) return BadArgument;

    const FloodPlanes planes{{relief, reliefStep, width, height},
                             {marker, markerStep, width, height}};
    const bool isMarching = norm >= kEuclidean && (flags & kByDistanceFlag) != 0;
    if (isMarching) {
        if (!floodByTiles(planes, kFreeRows.selected(), kTileRows.selected(), scratch, size))
            floodByMarching(planes, kFloodRows.selected(), scratch);
    } else {
        const bool sidesOnly = norm == kCityBlock;
        if (!floodByStepSweeps(planes, sidesOnly, scratch, size))
            floodBySteps(planes, kFloodRows.selected(), sidesOnly, scratch);
    }

    const WatershedRows& rows = kWatershedRows.selected();
    if ((flags & kBordersFlag) != 0) drawBorders(planes.marker, rows.markBorders, scratch);
    if ((flags & kBordersAcrossSidesFlag) != 0)
        drawBorders(planes.marker, rows.markBordersAcrossSides, scratch);
    return Success;
}

}  // namespace numeric
