#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "numeric/base/checks.h"
#include "numeric/base/scratch.h"
#include "numeric/base/views.h"
#include "numeric/distance/distance_rows.h"

// The exact Euclidean distance to the nearest zero, first down and up the columns, then along rows:
//
//   1. counts upwards: how far the next zero below is, a byte each, parked in the destination
//
//        destination, height 8:   row 6 | counts of rows 0 ... 3 |   each row of floats has room
//                                 row 7 | counts of rows 4 ... 7 |   for four rows of bytes, which
//                                                                    is written no sooner
//   2. downwards, row by row: the counts above, the smaller of both squared, then for every pixel
//      the smallest of square + k^2 among the columns k away, nearest first (near search)
//   3. from the first row on whose zeros are too far for that, again with counts of any size and
//      the lower envelope of parabolas (far search; Felzenszwalb & Huttenlocher 2012)
//
// The loops of all steps are in distance_rows.cpp.
namespace numeric {

const SlotTable<DistanceRows> kDistanceSlots(kDistanceBuilds);

namespace {

constexpr int kScratchAlignment = alignof(double);
constexpr int kScratchBytesPerEntry = 24;
constexpr int kScratchBytesMore = 56;

/// The lines of the scratch. Those of narrow planes have more overrun than content and do not fit
/// into the scratch; they lie in the object itself.
class DistanceScratch {
public:
    DistanceScratch(unsigned char* scratch, int width) {
        ScratchLayout layout(width < kNarrow ? m_narrow : scratch);
        farSquares = layout.take<double>(width + kLineOverrun / 4);
        above = layout.take<std::int32_t>(width + kLineOverrun / 4);
        nearest = layout.take<std::int32_t>(width + 1);
        const int padded = kNearReach + width + kLineOverrun + kNearReach;
        nearSquares = layout.take<std::int16_t>(padded) + kNearReach;
        std::fill_n(nearSquares - kNearReach, padded, std::numeric_limits<std::int16_t>::max());
        reaches = layout.take<unsigned char>(mostBlocks(width));
        forgetReaches(width);
    }
    DistanceScratch(const DistanceScratch&) = delete;
    DistanceScratch& operator=(const DistanceScratch&) = delete;

    void forgetReaches(int width) { std::fill_n(reaches, mostBlocks(width), kUnknownReach); }
    unsigned char* aboveBytes() const { return reinterpret_cast<unsigned char*>(above); }

    double* farSquares;
    std::int32_t* above;
    std::int32_t* nearest;
    std::int16_t* nearSquares;
    unsigned char* reaches;

private:
    static int mostBlocks(int width) { return (width + 1) / 2; }

    static constexpr int kNarrow = 128;
    static constexpr int kBytesPerColumn = 8 + 4 + 4 + 2 + 1;
    static constexpr int kOverrunBytes =
        (8 + 4) * kLineOverrun / 4 + 4 + 2 * (kLineOverrun + 2 * kNearReach);
    static_assert(kBytesPerColumn * kNarrow + kOverrunBytes + kScratchAlignment <=
                  kScratchBytesPerEntry * kNarrow + kScratchBytesMore);
    unsigned char m_narrow[kBytesPerColumn * kNarrow + kOverrunBytes + kScratchAlignment];
};

/// One call: where everything lies. The counts downwards are parked in the destination's rows until
/// the distances replace them: ints in their own row, bytes packed into the last rows, each row's
/// counts in a row that is written no sooner.
struct DistanceTransform {
    const DistanceRows& rows;
    PlaneView<const unsigned char> src;
    PlaneView<float> dst;
    DistanceScratch& scratch;

    unsigned char* belowBytes(int y) const {
        constexpr int kPerRow = sizeof(float);
        const int fromLast = dst.height - 1 - y;
        return reinterpret_cast<unsigned char*>(dst.row(dst.height - 1 - fromLast / kPerRow)) +
               static_cast<std::ptrdiff_t>(kPerRow - 1 - fromLast % kPerRow) * dst.width;
    }
    std::int32_t* below(int y) const { return reinterpret_cast<std::int32_t*>(dst.row(y)); }

    int transformNearRows() const;
    void transformRowsFrom(int start) const;
};

/// The rows from the top that byte counts and the near search suffice for; returns their number.
int DistanceTransform::transformNearRows() const {
    const int width = src.width;
    const int height = src.height;
    constexpr unsigned char kFar = 255;
    std::fill_n(belowBytes(height - 1), width, kFar);
    for (int y = height - 1; y >= 0; --y)
        rows.countBytes(src.row(y), belowBytes(std::min(y + 1, height - 1)), belowBytes(y), width);

    unsigned char* above = scratch.aboveBytes();
    std::fill_n(above, width, kFar);
    for (int y = 0; y < height; ++y) {
        rows.squareBytes(above, belowBytes(y), scratch.nearSquares, width);
        if (!rows.nearRow(scratch.nearSquares, scratch.reaches, dst.row(y), width)) return y;
    }
    return height;
}

/// The remaining rows, with counts of any size.
void DistanceTransform::transformRowsFrom(int start) const {
    const int width = src.width;
    const int height = src.height;
    const int none = std::max(height, kFarDistance);
    std::int32_t* above = scratch.above;
    std::fill_n(above, width, none);
    for (int y = 0; y < start; ++y) rows.countInts(src.row(y), above, above, width, none);
    std::fill_n(below(height - 1), width, none);
    for (int y = height - 1; y >= start; --y)
        rows.countInts(src.row(y), below(std::min(y + 1, height - 1)), below(y), width, none);

    const auto isNone = [none](std::int32_t count) { return count == none; };
    if (std::all_of(above, above + width, isNone) &&
        std::all_of(below(start), below(start) + width, isNone)) {
        const float farthest = std::sqrt(std::numeric_limits<float>::max());
        for (int y = start; y < height; ++y) std::fill_n(dst.row(y), width, farthest);
        return;
    }
    for (int y = start; y < height; ++y) {
        rows.squareInts(above, below(y), scratch.nearSquares, scratch.farSquares, width, none);
        if (rows.nearRow(scratch.nearSquares, scratch.reaches, dst.row(y), width)) continue;
        scratch.forgetReaches(width);
        rows.farRow(scratch.farSquares, scratch.nearest, dst.row(y), width, none);
    }
}

}  // namespace

KernelStatus distanceTransformScratchSize(int width, int height, int* size) {
    return reportScratchSize(width, height, size, [](int w, int h) {
        const std::int64_t longer = (std::int64_t{std::max(w, h)} + 3) / 4 * 4;
        return kScratchBytesPerEntry * longer + kScratchBytesMore;
    });
}

KernelStatus distanceTransform(const unsigned char* src, int srcStep, float* dst, int dstStep,
                               int width, int height, unsigned char* scratch) {
    const KernelStatus status =
        firstError({checkPointers({src, dst, scratch}), checkSize(width, height),
                    checkByteSteps(width, {srcStep}), checkFloatSteps(width, {dstStep})});
    if (status != Success) return status;

    DistanceScratch lines(scratch, width);
    const DistanceTransform transform{kDistanceSlots.selected(),
                                      {src, srcStep, width, height},
                                      {dst, dstStep, width, height},
                                      lines};
    const int done = transform.transformNearRows();
    if (done < height) transform.transformRowsFrom(done);
    return Success;
}

}  // namespace numeric
