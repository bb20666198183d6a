#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/reconstruction/peak_step_rows.cpp"
#include "numeric/reconstruction/peak_step_rows.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/base/neighbours.h"
#include "numeric/base/row_ends-inl.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::ScalableTag<float>;
using FloatVector = hn::Vec<FloatTag>;

enum Direction { Rightwards = 1, Leftwards = -1 };

// What a pixel becomes if a neighbour has this value. A bound that is NaN gives NaN, which is
// greater than nothing. The sum turns a negative zero into a positive one: which of the two a
// maximum takes would depend on the order of scanning.
HWY_INLINE float limited(float neighbour, float bound) {
    return (neighbour < bound ? neighbour : bound) + 0.0F;
}

HWY_INLINE FloatVector limited(FloatVector neighbour, FloatVector bound) {
    const auto least = hn::IfThenElse(hn::Lt(neighbour, bound), neighbour, bound);
    return hn::Add(least, hn::Zero(FloatTag()));
}

// A pixel of the plane that is NaN counts as lowest.
HWY_INLINE float lowered(float value, float bound) {
    const float number = value == value ? value : -std::numeric_limits<float>::infinity();
    return (number > bound ? bound : number) + 0.0F;
}

HWY_INLINE FloatVector lowered(FloatVector values, FloatVector bounds) {
    const FloatTag d;
    const auto lowest = hn::Set(d, -std::numeric_limits<float>::infinity());
    const auto numbers = hn::IfThenElse(hn::Eq(values, values), values, lowest);
    return hn::Add(hn::IfThenElse(hn::Gt(numbers, bounds), bounds, numbers), hn::Zero(d));
}

void lowerRow(const float* bound, float* row, int width) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int x = 0;
    for (; x + lanes <= width; x += lanes)
        hn::StoreU(lowered(hn::LoadU(d, row + x), hn::LoadU(d, bound + x)), d, row + x);
    for (; x < width; ++x) row[x] = lowered(row[x], bound[x]);
}

/// The first column after x, at most a vector on, at which vectors of the row lie in whole cache
/// lines.
HWY_INLINE int alignedFrom(const float* row, int x) {
    const int lanes = static_cast<int>(hn::Lanes(FloatTag()));
    const auto index = reinterpret_cast<std::uintptr_t>(row + x) / sizeof(float);
    return x + lanes - static_cast<int>(index % lanes);
}

/// The segment from the lowest to the highest of the given lanes.
HWY_INLINE Segment columnsOf(int x, BitWord lanes) {
    return {x + __builtin_ctzll(lanes), x + 63 - __builtin_clzll(lanes)};
}

template <Neighbours kNeighbours>
HWY_INLINE float largestOf(const float* source, int x, int width) {
    float largest = source[x];
    if (kNeighbours == Neighbours::Four) return largest;
    if (x > 0) largest = std::max(largest, source[x - 1]);
    if (x + 1 < width) largest = std::max(largest, source[x + 1]);
    return largest;
}

template <Neighbours kNeighbours>
HWY_INLINE FloatVector largestOf(const float* source) {
    const FloatTag d;
    const auto largest = hn::LoadU(d, source);
    if (kNeighbours == Neighbours::Four) return largest;
    return hn::Max(largest, hn::Max(hn::LoadU(d, source - 1), hn::LoadU(d, source + 1)));
}

template <Neighbours kNeighbours>
void lowerAndRaiseRow(const float* source, const float* bound, float* row, int width) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto pixel = [&](int x) {
        const float value = lowered(row[x], bound[x]);
        const float raised = limited(largestOf<kNeighbours>(source, x, width), bound[x]);
        row[x] = raised > value ? raised : value;
    };
    const auto vector = [&](int x) {
        const auto bounds = hn::LoadU(d, bound + x);
        const auto values = lowered(hn::LoadU(d, row + x), bounds);
        const auto raised = limited(largestOf<kNeighbours>(source + x), bounds);
        hn::StoreU(hn::IfThenElse(hn::Gt(raised, values), raised, values), d, row + x);
    };
    pixel(0);
    int x = 1;
    if (x + lanes < width) {
        vector(x);
        x = alignedFrom(row, x);
    }
    for (; x + lanes < width; x += lanes) vector(x);
    for (; x < width; ++x) pixel(x);
}

template <Neighbours kNeighbours>
HWY_INLINE void raisePixel(const RowPair& rows, int x, int width, Raised& raised) {
    if (!(rows.bound[x] > rows.row[x])) return;
    const float value = limited(largestOf<kNeighbours>(rows.source, x, width), rows.bound[x]);
    if (!(value > rows.row[x])) return;
    rows.row[x] = value;
    raised.columns.add({x, x});
    if (kNeighbours == Neighbours::Eight) raised.back.add({x, x});
}

/// The vectors of pixels that are tested together: whether any of them rises is easier to predict.
constexpr int kBlock = 4;

// Across a corner a pixel can hand on what it got from one side to the other side, where a dip of
// the source's bound lies between. Anything else the source's row has already passed along itself.
template <Neighbours kNeighbours, int kVectors>
HWY_INLINE void raiseVectors(const RowPair& rows, int x, Raised& raised) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    FloatVector values[kVectors], limits[kVectors];
    BitWord risen = 0;
    for (int i = 0; i < kVectors; ++i) {
        const int at = x + i * lanes;
        values[i] = hn::LoadU(d, rows.row + at);
        limits[i] =
            limited(largestOf<kNeighbours>(rows.source + at), hn::LoadU(d, rows.bound + at));
        risen |= toBits(FloatTag(), hn::Gt(limits[i], values[i])) << (i * lanes);
    }
    if (risen == 0) return;
    raised.columns.add(columnsOf(x, risen));
    BitWord rising = 0;
    for (int i = 0; i < kVectors; ++i) {
        const int at = x + i * lanes;
        const auto isGreater = hn::Gt(limits[i], values[i]);
        hn::StoreU(hn::IfThenElse(isGreater, limits[i], values[i]), d, rows.row + at);
        if (kNeighbours == Neighbours::Four) continue;
        const auto rises = [&](int side) {
            const auto beside = hn::LoadU(d, rows.source + at + side);
            const auto bound = hn::LoadU(d, rows.sourceBound + at + side);
            return hn::And(hn::Gt(limits[i], beside), hn::Gt(bound, beside));
        };
        rising |= toBits(FloatTag(), hn::Or(rises(-1), rises(1))) << (i * lanes);
    }
    rising &= risen;
    if (rising != 0) raised.back.add(columnsOf(x, rising));
}

/// Raises the pixels to the right of x that its value reaches.
HWY_INLINE void runRight(const float* bound, float* row, int x, int width, Segment& raised) {
    float carried = row[x];
    for (int next = x + 1; next < width; ++next) {
        carried = limited(carried, bound[next]);
        if (!(carried > row[next])) break;
        row[next] = carried;
        raised.add({next, next});
    }
}

HWY_INLINE void runLeft(const float* bound, float* row, int x, Segment& raised) {
    float carried = row[x];
    for (int next = x - 1; next >= 0; --next) {
        carried = limited(carried, bound[next]);
        if (!(carried > row[next])) break;
        row[next] = carried;
        raised.add({next, next});
    }
}

// A run leaves nothing to raise where it went, so one pass in either direction does.
HWY_INLINE Segment spreadPixels(const float* bound, float* row, Segment segment, int width) {
    Segment raised;
    for (int x = segment.first; x <= segment.last; ++x) runRight(bound, row, x, width, raised);
    for (int x = segment.last; x >= segment.first; --x) runLeft(bound, row, x, raised);
    return raised;
}

/// For each lane the one so many pixels before it on its way, or the first one there is.
template <Direction kDirection>
HWY_INLINE auto earlierBy(int distance) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    HWY_ALIGN std::int32_t from[hn::MaxLanes(d)];
    for (int i = 0; i < lanes; ++i) from[i] = std::clamp(i - kDirection * distance, 0, lanes - 1);
    return hn::SetTableIndices(d, from);
}

// What a value carried into a pixel leaves there is clamped between the pixel and its limit, the
// bound where that is greater. Clamps compose into clamps, so those of all pixels up to each one
// are found by doubling. One composed with itself is itself: the first lanes may be repeated.
template <Direction kDirection>
HWY_INLINE FloatVector carried(float before, FloatVector values, FloatVector bounds) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    auto lowest = values;
    auto limit = hn::IfThenElse(hn::Gt(bounds, values), hn::Add(bounds, hn::Zero(d)), values);
    for (int distance = 1; distance < lanes; distance *= 2) {
        const auto earlier = earlierBy<kDirection>(distance);
        const auto lowestEarlier = hn::TableLookupLanes(lowest, earlier);
        const auto limitEarlier = hn::TableLookupLanes(limit, earlier);
        lowest = hn::Min(limit, hn::Max(lowest, lowestEarlier));
        limit = hn::Min(limit, hn::Max(lowest, limitEarlier));
    }
    return hn::Min(limit, hn::Max(lowest, hn::Set(d, before)));
}

HWY_INLINE bool canRaise(float value, float bound, float pixel) {
    return bound > pixel && value > pixel;
}

Segment spreadRow(const float* bound, float* row, Segment segment, int width) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    // Vectors reach one pixel beyond the segment and need a neighbour on either side themselves.
    const int lastStart = width - 1 - lanes;
    if (segment.last - segment.first < 2 * lanes || lastStart < 1)
        return spreadPixels(bound, row, segment, width);

    Segment raised;
    const auto raiseTo = [&](int x, FloatVector before, FloatVector after) {
        hn::StoreU(after, d, row + x);
        const BitWord lanesRaised = toBits(FloatTag(), hn::Gt(after, before));
        if (lanesRaised != 0) raised.add(columnsOf(x, lanesRaised));
    };
    Segment waiting;  // pixels that the ones to the right of them raise
    bool isFirst = true;
    for (int x = std::max(segment.first - 1, 1);; x += lanes) {
        x = std::min(x, lastStart);
        const auto values = hn::LoadU(d, row + x);
        const auto bounds = hn::LoadU(d, bound + x);
        const auto beside = hn::Max(hn::LoadU(d, row + x - 1), hn::LoadU(d, row + x + 1));
        if (!hn::AllFalse(d, hn::Gt(limited(beside, bounds), values))) {
            const auto after = carried<Rightwards>(row[x - 1], values, bounds);
            raiseTo(x, values, carried<Leftwards>(row[x + lanes], after, bounds));
            if (canRaise(row[x], bound[x - 1], row[x - 1])) waiting.add({x - 1, x - 1});
        } else if (x + lanes > segment.last + 1) {
            break;
        }
        if (x == lastStart) break;
        if (isFirst) x = alignedFrom(row, x) - lanes;
        isFirst = false;
    }
    for (int x = waiting.last + 1 - lanes; !waiting.isEmpty(); x -= lanes) {
        x = std::max(x, 1);
        const auto values = hn::LoadU(d, row + x);
        const auto bounds = hn::LoadU(d, bound + x);
        if (!hn::AllFalse(d, hn::Gt(limited(hn::LoadU(d, row + x + 1), bounds), values)))
            raiseTo(x, values, carried<Leftwards>(row[x + lanes], values, bounds));
        else if (x <= waiting.first)
            break;
        if (x == 1) break;
    }
    if (canRaise(row[1], bound[0], row[0])) runLeft(bound, row, 1, raised);
    if (canRaise(row[width - 2], bound[width - 1], row[width - 1]))
        runRight(bound, row, width - 2, width, raised);
    return raised;
}

template <Neighbours kNeighbours>
Raised raiseRow(const RowPair& rows, Segment changed, int width) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const int reach = kNeighbours == Neighbours::Eight ? 1 : 0;
    int first = std::max(changed.first - reach, 0);
    int last = std::min(changed.last + reach, width - 1);
    Raised raised;
    // A vector would have to wait for the single pixel that the step before has stored.
    const bool isCorridor = last - first < 4;
    if (isCorridor || width < lanes + 2) {
        for (int x = first; x <= last; ++x) raisePixel<kNeighbours>(rows, x, width, raised);
    } else {
        if (first == 0) raisePixel<kNeighbours>(rows, first++, width, raised);
        if (last == width - 1) raisePixel<kNeighbours>(rows, last--, width, raised);
        const int start = last - first < kBlock * lanes ? first : alignedFrom(rows.row, first);
        const int blocks = (last + 1 - start) / (kBlock * lanes);
        const auto raiseBlock = [&](int i) {
            raiseVectors<kNeighbours, kBlock>(rows, start + i * kBlock * lanes, raised);
        };
        const auto raiseEnds = [&] {
            if (start > first) raiseVectors<kNeighbours, 1>(rows, first, raised);
            for (int x = start + blocks * kBlock * lanes; x <= last; x += lanes)
                raiseVectors<kNeighbours, 1>(rows, std::min(x, width - 1 - lanes), raised);
        };
        raiseEnds();
        if (rows.row < rows.source)
            for (int i = blocks - 1; i >= 0; --i) raiseBlock(i);
        else
            for (int i = 0; i < blocks; ++i) raiseBlock(i);
    }
    return raised;
}

}  // namespace

constexpr PeakStepRows kRows8 = {lowerRow, lowerAndRaiseRow<Neighbours::Eight>,
                                 raiseRow<Neighbours::Eight>, spreadRow};
constexpr PeakStepRows kRows4 = {lowerRow, lowerAndRaiseRow<Neighbours::Four>,
                                 raiseRow<Neighbours::Four>, spreadRow};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<PeakStepRows> kPeakStep8Builds = NUMERIC_ROW_BUILDS(kRows8);
const RowBuilds<PeakStepRows> kPeakStep4Builds = NUMERIC_ROW_BUILDS(kRows4);
}  // namespace numeric
#endif
