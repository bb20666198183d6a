#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/distance/distance_rows.cpp"
#include "numeric/distance/distance_rows.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/base/row_ends-inl.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using ByteTag = hn::ScalableTag<std::uint8_t>;
using ShortTag = hn::ScalableTag<std::int16_t>;
using IntTag = hn::ScalableTag<std::int32_t>;
using FloatTag = hn::ScalableTag<float>;
using DoubleTag = hn::ScalableTag<double>;

// --- Vertical counts -----------------------------------------------------------------------------

// From pixels, or from their counts in the other direction: both are zero at the same places.
HWY_INLINE hn::Vec<ByteTag> nextCount(hn::Vec<ByteTag> pixels, hn::Vec<ByteTag> before) {
    const ByteTag d;
    const auto isZero = hn::Eq(pixels, hn::Zero(d));
    return hn::IfThenZeroElse(isZero, hn::SaturatedAdd(before, hn::Set(d, 1)));
}

void countBytes(const unsigned char* src, const unsigned char* before, unsigned char* counts,
                int width) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    for (int x = (width - 1) / lanes * lanes; x >= 0; x -= lanes) {
        const int count = width - x;
        const auto next = nextCount(loadFirst(d, src + x, count), loadFirst(d, before + x, count));
        storeFirst(next, d, counts + x, count);
    }
}

template <class D>
HWY_INLINE hn::Vec<D> nextCount(D d, hn::Vec<D> pixels, hn::Vec<D> before, int none) {
    const auto isZero = hn::Eq(pixels, hn::Zero(d));
    const auto more = hn::Add(hn::Min(before, hn::Set(d, none - 1)), hn::Set(d, 1));
    return hn::IfThenZeroElse(isZero, more);
}

void countInts(const unsigned char* src, const std::int32_t* before, std::int32_t* counts,
               int width, int none) {
    const IntTag d;
    const hn::Rebind<std::uint8_t, IntTag> bytes;
    const int lanes = static_cast<int>(hn::Lanes(d));
    for (int x = 0; x < width; x += lanes) {
        const int count = width - x;
        const auto pixels = hn::PromoteTo(d, loadFirst(bytes, src + x, count));
        const auto next = nextCount(d, pixels, loadFirst(d, before + x, count), none);
        storeFirst(next, d, counts + x, count);
    }
}

// --- Squares for the near search -----------------------------------------------------------------

void squareBytes(unsigned char* above, const unsigned char* below, std::int16_t* squares,
                 int width) {
    const ShortTag d;
    const ByteTag bytes;
    const hn::Rebind<std::uint8_t, ShortTag> halfBytes;
    const int lanes = static_cast<int>(hn::Lanes(bytes));
    const int shortLanes = static_cast<int>(hn::Lanes(d));
    HWY_ALIGN std::uint8_t counts[hn::MaxLanes(bytes)];
    int x = 0;
    for (; x < width; x += lanes) {
        const int count = width - x;
        const auto up = loadFirst(bytes, below + x, count);
        const auto down = nextCount(up, hn::LoadU(bytes, above + x));
        hn::StoreU(down, bytes, above + x);
        const auto nearest = hn::Min(down, up);
        hn::Store(hn::Min(nearest, hn::Set(bytes, kFarDistance)), bytes, counts);
        for (int i = 0; i < lanes; i += shortLanes) {
            const auto wide = hn::PromoteTo(d, hn::LoadU(halfBytes, counts + i));
            hn::StoreU(hn::Mul(wide, wide), d, squares + x + i);
        }
    }
    // The last vector reached beyond the row, where the near search expects nothing near.
    for (int i = width; i < x; ++i) squares[i] = std::numeric_limits<std::int16_t>::max();
}

// --- Near search: all columns within reach, nearest first ----------------------------------------

// The square root of a float is correctly rounded, so for whole numbers below 2^24 it is the root
// computed in double and stored as float. Zeros and ones are their own roots.
template <bool kZerosAndOnes>
HWY_INLINE void storeRoots(const std::int16_t* squares, float* dst, int count) {
    const FloatTag d;
    const IntTag ints;
    const hn::Rebind<std::int16_t, FloatTag> shorts;
    const int lanes = static_cast<int>(hn::Lanes(d));
    for (int i = 0; i < count; i += lanes) {
        const auto wide = hn::PromoteTo(ints, hn::LoadU(shorts, squares + i));
        const auto exact = hn::ConvertTo(d, wide);
        storeFirst(kZerosAndOnes ? exact : hn::Sqrt(exact), d, dst + i, count - i);
    }
}

HWY_INLINE hn::Vec<ShortTag> nearer(hn::Vec<ShortTag> squares, const std::int16_t* line, int k,
                                    hn::Vec<ShortTag> squareOfK) {
    const ShortTag d;
    const auto sideways = hn::Min(hn::LoadU(d, line - k), hn::LoadU(d, line + k));
    return hn::Min(squares, hn::SaturatedAdd(sideways, squareOfK));
}

// The distances of neighbouring pixels differ by 1 at most, so a block's largest distance, rounded
// up, changes by at most 1 from row to row. If it was r, no zero pixel more than r columns away can
// be nearer than the nearest one within r columns.
bool nearRow(const std::int16_t* squares, unsigned char* reaches, float* dst, int width) {
    const ShortTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const int reach = std::min(kNearReach, width - 1);
    // A column out of reach is at least reach + 1 away, a capped one kFarDistance.
    constexpr int kLargestNear = kFarDistance * kFarDistance - 1;
    const int limit = reach == width - 1 ? kLargestNear : (reach + 1) * (reach + 1);
    HWY_ALIGN std::int16_t found[2 * hn::MaxLanes(d)];
    for (int x = 0; x < width; x += 2 * lanes) {
        const std::int16_t* line = squares + x;
        auto first = hn::LoadU(d, line);
        auto second = hn::LoadU(d, line + lanes);
        const int count = std::min(2 * lanes, width - x);
        if (count < 2 * lanes) {
            first = hn::IfThenElseZero(hn::FirstN(d, std::min(count, lanes)), first);
            second = hn::IfThenElseZero(hn::FirstN(d, std::max(count - lanes, 0)), second);
        }
        const auto exceeds = [&](int square) {
            const auto largest = hn::Max(first, second);
            return !hn::AllFalse(d, hn::Gt(largest, hn::Set(d, static_cast<std::int16_t>(square))));
        };
        const int before = *reaches;
        const bool isKnown = before != kUnknownReach;
        auto squareOfK = hn::Set(d, 1);
        auto growth = hn::Set(d, 3);
        for (int k = 1; k <= std::min(before, reach); ++k) {
            if (!isKnown && !exceeds(k * k)) break;
            first = nearer(first, line, k, squareOfK);
            second = nearer(second, line + lanes, k, squareOfK);
            squareOfK = hn::Add(squareOfK, growth);
            growth = hn::Add(growth, hn::Set(d, 2));
        }
        if (before > reach && exceeds(limit)) return false;
        int now = isKnown ? std::max(before - 1, 0) : 0;
        if (isKnown)
            now += exceeds(now * now) + exceeds((now + 1) * (now + 1));
        else
            while (exceeds(now * now)) ++now;
        *reaches++ = static_cast<unsigned char>(now);
        hn::Store(first, d, found);
        hn::Store(second, d, found + lanes);
        if (before == 0)
            storeRoots<true>(found, dst + x, count);
        else
            storeRoots<false>(found, dst + x, count);
    }
    return true;
}

// --- Far search ----------------------------------------------------------------------------------
//
// (x - q)^2 + f(q) over columns q has its minimum at a column that never moves left as x moves
// right. So the nearest columns of the first pixels of all blocks are found by halving: that of a
// pixel lies between those of its neighbours on either side, and all pixels of a block find theirs
// between those of the block's first pixel and the next block's.

// Integers carry an offset of -2^31, so that 2 * 32767^2 fits and the largest value is "none".
HWY_INLINE hn::Vec<IntTag> squareCounts(IntTag d, hn::Vec<IntTag> counts, int none) {
    const auto lowest = hn::Set(d, std::numeric_limits<std::int32_t>::min());
    const auto isNone = hn::Gt(counts, hn::Set(d, none - 1));
    return hn::IfThenZeroElse(isNone, hn::Add(hn::Mul(counts, counts), lowest));
}

HWY_INLINE hn::Vec<DoubleTag> squareCounts(DoubleTag d,
                                           hn::Vec<hn::Rebind<std::int32_t, DoubleTag>> counts,
                                           int none) {
    const auto exact = hn::PromoteTo(d, counts);
    const auto isNone = hn::Gt(exact, hn::Set(d, none - 1.0));
    return hn::IfThenElse(isNone, hn::Set(d, 1e300), hn::Mul(exact, exact));
}

HWY_INLINE void storeFarRoots(IntTag d, hn::Vec<IntTag> squares, float* dst, int count) {
    const FloatTag floats;
    const auto lowest = hn::Set(d, std::numeric_limits<std::int32_t>::min());
    storeFirst(hn::Sqrt(hn::ConvertTo(floats, hn::Sub(squares, lowest))), floats, dst, count);
}

HWY_INLINE void storeFarRoots(DoubleTag /*d*/, hn::Vec<DoubleTag> squares, float* dst, int count) {
    const hn::Rebind<float, DoubleTag> floats;
    storeFirst(hn::DemoteTo(floats, hn::Sqrt(squares)), floats, dst, count);
}

template <class D, class T = hn::TFromD<D>>
void squareIntsIn(D d, std::int32_t* above, const std::int32_t* below, std::int16_t* nearSquares,
                  T* farSquares, int width, int none) {
    const hn::Rebind<std::int32_t, D> ints;
    const hn::Rebind<std::int16_t, D> shorts;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto farthest = hn::Set(ints, kFarDistance);
    int x = 0;
    for (; x < width; x += lanes) {
        const int count = width - x;
        const auto up = loadFirst(ints, below + x, count);
        const auto down = nextCount(ints, up, hn::LoadU(ints, above + x), none);
        hn::StoreU(down, ints, above + x);
        const auto nearest = hn::Min(down, up);
        hn::StoreU(squareCounts(d, nearest, none), d, farSquares + x);
        const auto capped = hn::Min(nearest, farthest);
        hn::StoreU(hn::DemoteTo(shorts, hn::Mul(capped, capped)), shorts, nearSquares + x);
    }
    // Behind the row there is nothing near.
    hn::StoreU(squareCounts(d, hn::Set(ints, none), none), d, farSquares + width);
    for (int i = width; i < x; ++i) nearSquares[i] = std::numeric_limits<std::int16_t>::max();
}

bool fitsIntegers(int width, int none) {
    return width <= kLargestIntegerSide && none <= kLargestIntegerSide;
}

void squareInts(std::int32_t* above, const std::int32_t* below, std::int16_t* nearSquares,
                double* farSquares, int width, int none) {
    if (fitsIntegers(width, none))
        squareIntsIn(IntTag(), above, below, nearSquares,
                     reinterpret_cast<std::int32_t*>(farSquares), width, none);
    else
        squareIntsIn(DoubleTag(), above, below, nearSquares, farSquares, width, none);
}

template <class D>
HWY_INLINE hn::Vec<D> squareAt(D /*d*/, hn::Vec<D> offset, hn::Vec<D> square) {
    return hn::Add(hn::Mul(offset, offset), square);
}

/// The column in [first, last], or beside it, that is nearest to pixel x.
template <class D, class T = hn::TFromD<D>>
HWY_INLINE int nearestColumn(D d, const T* squares, int first, int last, int x) {
    const int lanes = static_cast<int>(hn::Lanes(d));
    auto offset = hn::Iota(d, static_cast<T>(first - x));
    auto best = squareAt(d, offset, hn::LoadU(d, squares + first));
    auto bestOffset = offset;
    for (int q = first + lanes; q <= last; q += lanes) {
        offset = hn::Add(offset, hn::Set(d, static_cast<T>(lanes)));
        const auto square = squareAt(d, offset, hn::LoadU(d, squares + q));
        const auto isBetter = hn::Lt(square, best);
        best = hn::IfThenElse(isBetter, square, best);
        bestOffset = hn::IfThenElse(isBetter, offset, bestOffset);
    }
    const auto isLeast = hn::Eq(best, hn::MinOfLanes(d, best));
    HWY_ALIGN T offsets[hn::MaxLanes(d)];
    hn::Store(bestOffset, d, offsets);
    return x + static_cast<int>(offsets[hn::FindFirstTrue(d, isLeast)]);
}

template <class D, class T = hn::TFromD<D>>
void farRowIn(D d, const T* squares, std::int32_t* nearest, float* dst, int width) {
    const int lanes = static_cast<int>(hn::Lanes(d));
    const int blocks = (width + lanes - 1) / lanes;
    int stride = 1;
    while (stride < blocks) stride *= 2;
    nearest[0] = nearestColumn(d, squares, 0, width - 1, 0);
    nearest[blocks] = nearestColumn(d, squares, nearest[0], width - 1, width - 1);
    for (stride /= 2; stride > 0; stride /= 2)
        for (int block = stride; block < blocks; block += 2 * stride)
            nearest[block] =
                nearestColumn(d, squares, nearest[block - stride],
                              nearest[std::min(block + stride, blocks)], block * lanes);
    for (int block = 0; block < blocks; ++block) {
        const int x = block * lanes;
        const int first = nearest[block];
        const int last = nearest[block + 1];
        auto offset = hn::Iota(d, static_cast<T>(x - first));
        auto best = squareAt(d, offset, hn::Set(d, squares[first]));
        for (int q = first + 1; q <= last; ++q) {
            offset = hn::Sub(offset, hn::Set(d, 1));
            best = hn::Min(best, squareAt(d, offset, hn::Set(d, squares[q])));
        }
        storeFarRoots(d, best, dst + x, width - x);
    }
}

void farRow(const double* farSquares, std::int32_t* nearest, float* dst, int width, int none) {
    if (fitsIntegers(width, none))
        farRowIn(IntTag(), reinterpret_cast<const std::int32_t*>(farSquares), nearest, dst, width);
    else
        farRowIn(DoubleTag(), farSquares, nearest, dst, width);
}

}  // namespace

constexpr DistanceRows kRows = {countBytes, countInts, squareBytes, squareInts, nearRow, farRow};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<DistanceRows> kDistanceBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
