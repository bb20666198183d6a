// Columns of several rows to vectors with a row in each lane, and back, for one target at a time.

#if defined(NUMERIC_TRANSPOSE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_TRANSPOSE_INL_H_
#undef NUMERIC_TRANSPOSE_INL_H_
#else
#define NUMERIC_TRANSPOSE_INL_H_
#endif

#include "hwy/highway.h"
#include "numeric/base/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

// columns[i] is column i of as many rows as there are lanes; the rows lie `spacing` floats apart.

#if HWY_TARGET == HWY_SCALAR

HWY_INLINE void loadColumns(const float* first, int /*spacing*/, Vec (&columns)[4]) {
    for (int i = 0; i < 4; ++i) columns[i] = hn::LoadU(Lanes(), first + i);
}

HWY_INLINE void storeColumns(const Vec (&columns)[4], float* first, int /*spacing*/) {
    for (int i = 0; i < 4; ++i) hn::StoreU(columns[i], Lanes(), first + i);
}

/// Transposes a square of floats with as many rows as a vector has lanes.
HWY_INLINE void transposeSquare(Vec (&)[kLanes]) {}

#else

/// 4 floats of every fourth row, one row to a 128-bit block.
template <class D>
HWY_INLINE hn::Vec<D> loadBlocks(D d, const float* first, int spacing) {
    if constexpr (hn::MaxLanes(D()) <= 4) {
        return hn::LoadU(d, first);
    } else {
        const hn::Half<D> half;
        const float* upper = first + static_cast<int>(hn::Lanes(half)) * spacing;
        return hn::Combine(d, loadBlocks(half, upper, spacing), loadBlocks(half, first, spacing));
    }
}

template <class D>
HWY_INLINE void storeBlocks(D d, hn::Vec<D> v, float* first, int spacing) {
    if constexpr (hn::MaxLanes(D()) <= 4) {
        hn::StoreU(v, d, first);
    } else {
        const hn::Half<D> half;
        storeBlocks(half, hn::LowerHalf(half, v), first, spacing);
        storeBlocks(half, hn::UpperHalf(half, v),
                    first + static_cast<int>(hn::Lanes(half)) * spacing, spacing);
    }
}

/// Transposes the 4 x 4 floats of each 128-bit block.
HWY_INLINE void transposeBlocks(Vec& v0, Vec& v1, Vec& v2, Vec& v3) {
    const Lanes d;
    const hn::Repartition<double, Lanes> pairs;
    const auto low01 = hn::BitCast(pairs, hn::InterleaveLower(d, v0, v1));
    const auto low23 = hn::BitCast(pairs, hn::InterleaveLower(d, v2, v3));
    const auto high01 = hn::BitCast(pairs, hn::InterleaveUpper(d, v0, v1));
    const auto high23 = hn::BitCast(pairs, hn::InterleaveUpper(d, v2, v3));
    v0 = hn::BitCast(d, hn::InterleaveLower(pairs, low01, low23));
    v1 = hn::BitCast(d, hn::InterleaveUpper(pairs, low01, low23));
    v2 = hn::BitCast(d, hn::InterleaveLower(pairs, high01, high23));
    v3 = hn::BitCast(d, hn::InterleaveUpper(pairs, high01, high23));
}

HWY_INLINE void loadColumns(const float* first, int spacing, Vec (&columns)[4]) {
    HWY_UNROLL(4)
    for (int i = 0; i < 4; ++i) columns[i] = loadBlocks(Lanes(), first + i * spacing, spacing);
    transposeBlocks(columns[0], columns[1], columns[2], columns[3]);
}

HWY_INLINE void storeColumns(const Vec (&columns)[4], float* first, int spacing) {
    Vec rows[4] = {columns[0], columns[1], columns[2], columns[3]};
    transposeBlocks(rows[0], rows[1], rows[2], rows[3]);
    HWY_UNROLL(4)
    for (int i = 0; i < 4; ++i) storeBlocks(Lanes(), rows[i], first + i * spacing, spacing);
}

/// Transposes a square of floats with as many rows as a vector has lanes.
HWY_INLINE void transposeSquare(Vec (&v)[kLanes]) {
    const Lanes d;
    // The rows of one position within their block of four exchange whole blocks ...
    HWY_UNROLL(4)
    for (int i = 0; i < 4; ++i) {
        if constexpr (kLanes == 8) {
            const Vec a = v[i], b = v[i + 4];
            v[i] = hn::ConcatLowerLower(d, b, a);
            v[i + 4] = hn::ConcatUpperUpper(d, b, a);
        } else if constexpr (kLanes == 16) {
            const Vec lowAC = hn::ConcatLowerLower(d, v[i + 8], v[i]);
            const Vec highAC = hn::ConcatUpperUpper(d, v[i + 8], v[i]);
            const Vec lowBD = hn::ConcatLowerLower(d, v[i + 12], v[i + 4]);
            const Vec highBD = hn::ConcatUpperUpper(d, v[i + 12], v[i + 4]);
            v[i] = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(lowBD), lowAC);
            v[i + 4] = hn::OddEvenBlocks(lowBD, hn::SwapAdjacentBlocks(lowAC));
            v[i + 8] = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(highBD), highAC);
            v[i + 12] = hn::OddEvenBlocks(highBD, hn::SwapAdjacentBlocks(highAC));
        }
    }
    // ... then each block is transposed.
    HWY_UNROLL(4)
    for (int i = 0; i < kLanes; i += 4) transposeBlocks(v[i], v[i + 1], v[i + 2], v[i + 3]);
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#endif
