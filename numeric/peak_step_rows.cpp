#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/peak_step_rows.cpp"
#include "numeric/peak_step_rows.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::ScalableTag<float>;
using FloatVector = hn::Vec<FloatTag>;

enum Neighbours { Four, Eight };

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

/// One bit per lane.
HWY_INLINE unsigned toBits(hn::Mask<FloatTag> mask) {
    const FloatTag d;
    std::uint8_t bytes[8] = {};
    hn::StoreMaskBits(d, mask, bytes);
    return bytes[0] | static_cast<unsigned>(bytes[1]) << 8;
}

/// The segment from the lowest to the highest of the given lanes.
HWY_INLINE Segment columnsOf(int x, unsigned lanes) {
    return {x + __builtin_ctz(lanes), x + 31 - __builtin_clz(lanes)};
}

template <Neighbours kNeighbours>
HWY_INLINE float largestOf(const float* source, int x, int width) {
    float largest = source[x];
    if (kNeighbours == Four) return largest;
    if (x > 0) largest = std::max(largest, source[x - 1]);
    if (x + 1 < width) largest = std::max(largest, source[x + 1]);
    return largest;
}

template <Neighbours kNeighbours>
HWY_INLINE FloatVector largestOf(const float* source) {
    const FloatTag d;
    const auto largest = hn::LoadU(d, source);
    if (kNeighbours == Four) return largest;
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
    pixel(0);
    int x = 1;
    for (; x + lanes < width; x += lanes) {
        const auto bounds = hn::LoadU(d, bound + x);
        const auto values = lowered(hn::LoadU(d, row + x), bounds);
        const auto raised = limited(largestOf<kNeighbours>(source + x), bounds);
        hn::StoreU(hn::IfThenElse(hn::Gt(raised, values), raised, values), d, row + x);
    }
    for (; x < width; ++x) pixel(x);
}

template <Neighbours kNeighbours>
HWY_INLINE void raisePixel(const float* source, const float* bound, float* row, int x, int width,
                           Segment& raised) {
    if (!(bound[x] > row[x])) return;
    const float value = limited(largestOf<kNeighbours>(source, x, width), bound[x]);
    if (!(value > row[x])) return;
    row[x] = value;
    raised.add({x, x});
}

template <Neighbours kNeighbours>
HWY_INLINE void raiseVector(const float* source, const float* bound, float* row, int x,
                            Segment& raised) {
    const FloatTag d;
    const auto values = hn::LoadU(d, row + x);
    const auto limits = limited(largestOf<kNeighbours>(source + x), hn::LoadU(d, bound + x));
    const auto isGreater = hn::Gt(limits, values);
    if (hn::AllFalse(d, isGreater)) return;
    hn::StoreU(hn::IfThenElse(isGreater, limits, values), d, row + x);
    raised.add(columnsOf(x, toBits(isGreater)));
}

/// The last pixel to the right that v[x] raises, directly or along the row; x if none.
HWY_INLINE int runRight(const float* bound, float* row, int x, int width) {
    float carried = row[x];
    for (; x + 1 < width; ++x) {
        carried = limited(carried, bound[x + 1]);
        if (!(carried > row[x + 1])) break;
        row[x + 1] = carried;
    }
    return x;
}

HWY_INLINE int runLeft(const float* bound, float* row, int x) {
    float carried = row[x];
    for (; x > 0; --x) {
        carried = limited(carried, bound[x - 1]);
        if (!(carried > row[x - 1])) break;
        row[x - 1] = carried;
    }
    return x;
}

// A run leaves nothing to raise behind it, so one pass in either direction does.
HWY_INLINE Segment spreadPixels(const float* bound, float* row, Segment segment, int width) {
    Segment reached = segment;
    for (int x = segment.first; x <= segment.last; ++x)
        reached.last = std::max(reached.last, runRight(bound, row, x, width));
    for (int x = segment.last; x >= segment.first; --x)
        reached.first = std::min(reached.first, runLeft(bound, row, x));
    return reached;
}

Segment spreadRow(const float* bound, float* row, Segment segment, int width) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    // Vectors reach one pixel beyond the segment and need a neighbour on either side themselves.
    const int first = std::max(segment.first - 1, 1);
    const int end = std::min(segment.last + 2, width - 1);
    if (end - first < 2 * lanes) return spreadPixels(bound, row, segment, width);

    Segment reached = segment;
    reached.add(spreadPixels(bound, row, {first - 1, first}, width));
    for (int x = first; x < end; x += lanes) {
        x = std::min(x, end - lanes);
        const auto beside = hn::Max(hn::LoadU(d, row + x - 1), hn::LoadU(d, row + x + 1));
        const auto values = limited(beside, hn::LoadU(d, bound + x));
        if (hn::AllFalse(d, hn::Gt(values, hn::LoadU(d, row + x)))) continue;
        reached.add(spreadPixels(bound, row, {x - 1, x + lanes}, width));
    }
    reached.add(spreadPixels(bound, row, {end - 1, end}, width));
    return reached;
}

template <Neighbours kNeighbours>
Segment raiseRow(const float* source, const float* bound, float* row, Segment changed, int width) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const int reach = kNeighbours == Eight ? 1 : 0;
    int first = std::max(changed.first - reach, 0);
    int last = std::min(changed.last + reach, width - 1);
    Segment raised;
    // A vector would have to wait for the single pixel that the step before has stored.
    const bool isCorridor = last - first < 4;
    if (isCorridor || width < lanes + 2) {
        for (int x = first; x <= last; ++x)
            raisePixel<kNeighbours>(source, bound, row, x, width, raised);
    } else {
        if (first == 0) raisePixel<kNeighbours>(source, bound, row, first++, width, raised);
        if (last == width - 1) raisePixel<kNeighbours>(source, bound, row, last--, width, raised);
        for (int x = first; x <= last; x += lanes)
            raiseVector<kNeighbours>(source, bound, row, std::min(x, width - 1 - lanes), raised);
    }
    return raised;
}

}  // namespace

constexpr PeakStepRows kRows8 = {lowerRow, lowerAndRaiseRow<Eight>, raiseRow<Eight>, spreadRow};
constexpr PeakStepRows kRows4 = {lowerRow, lowerAndRaiseRow<Four>, raiseRow<Four>, spreadRow};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<PeakStepRows> kPeakStep8Builds = NUMERIC_ROW_BUILDS(kRows8);
const RowBuilds<PeakStepRows> kPeakStep4Builds = NUMERIC_ROW_BUILDS(kRows4);
}  // namespace numeric
#endif
