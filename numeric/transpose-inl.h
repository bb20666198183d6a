// Columns of several rows to vectors with a row in each lane, and back, for one target at a time.

#if defined(NUMERIC_TRANSPOSE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_TRANSPOSE_INL_H_
#undef NUMERIC_TRANSPOSE_INL_H_
#else
#define NUMERIC_TRANSPOSE_INL_H_
#endif

#include "hwy/highway.h"
#include "numeric/fft-inl.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

/// Rows at a fixed distance in floats from each other.
template <class Float>
struct SpacedRows {
    Float* first;
    int spacing;
    HWY_INLINE Float* operator[](int row) const { return first + row * spacing; }
};

#if HWY_TARGET == HWY_SCALAR

template <class Rows>
HWY_INLINE void loadFour(Rows rows, Vec (&columns)[4]) {
    HWY_UNROLL(4)
    for (int i = 0; i < 4; ++i) columns[i] = hn::LoadU(Lanes(), rows[0] + i);
}

template <class Rows>
HWY_INLINE void storeFour(const Vec (&columns)[4], Rows rows) {
    HWY_UNROLL(4)
    for (int i = 0; i < 4; ++i) hn::StoreU(columns[i], Lanes(), rows[0] + i);
}

#else

/// 4 floats of the rows first, first + 4, ..., one row to a 128-bit block.
template <class D, class Rows>
HWY_INLINE hn::Vec<D> loadBlocks(D d, Rows rows, int first) {
    if constexpr (hn::MaxLanes(D()) <= 4) {
        return hn::LoadU(d, rows[first]);
    } else {
        const hn::Half<D> half;
        const int next = first + static_cast<int>(hn::Lanes(half));
        return hn::Combine(d, loadBlocks(half, rows, next), loadBlocks(half, rows, first));
    }
}

template <class D, class Rows>
HWY_INLINE void storeBlocks(D d, hn::Vec<D> v, Rows rows, int first) {
    if constexpr (hn::MaxLanes(D()) <= 4) {
        hn::StoreU(v, d, rows[first]);
    } else {
        const hn::Half<D> half;
        const int next = first + static_cast<int>(hn::Lanes(half));
        storeBlocks(half, hn::LowerHalf(half, v), rows, first);
        storeBlocks(half, hn::UpperHalf(half, v), rows, next);
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

template <class Rows>
HWY_INLINE void loadFour(Rows rows, Vec (&columns)[4]) {
    HWY_UNROLL(4)
    for (int i = 0; i < 4; ++i) columns[i] = loadBlocks(Lanes(), rows, i);
    transposeBlocks(columns[0], columns[1], columns[2], columns[3]);
}

template <class Rows>
HWY_INLINE void storeFour(const Vec (&columns)[4], Rows rows) {
    Vec blocks[4] = {columns[0], columns[1], columns[2], columns[3]};
    transposeBlocks(blocks[0], blocks[1], blocks[2], blocks[3]);
    HWY_UNROLL(4)
    for (int i = 0; i < 4; ++i) storeBlocks(Lanes(), blocks[i], rows, i);
}

#endif

/// Transposes a square of floats with as many rows as a vector has lanes.
HWY_INLINE void transposeSquare(Vec (&v)[kLanes]) {
#if HWY_TARGET != HWY_SCALAR
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
#else
    (void)v;
#endif
}

/// columns[i] receives column i of as many rows as there are lanes, `spacing` floats apart.
HWY_INLINE void loadColumns(const float* first, int spacing, Vec (&columns)[4]) {
    loadFour(SpacedRows<const float>{first, spacing}, columns);
}

/// The reverse of loadColumns.
HWY_INLINE void storeColumns(const Vec (&columns)[4], float* first, int spacing) {
    storeFour(columns, SpacedRows<float>{first, spacing});
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#endif
