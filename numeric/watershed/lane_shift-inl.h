// Moving the lanes of a whole vector, across the borders of its 128-bit blocks, for one target at a
// time.

#if defined(NUMERIC_LANE_SHIFT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_LANE_SHIFT_INL_H_
#undef NUMERIC_LANE_SHIFT_INL_H_
#else
#define NUMERIC_LANE_SHIFT_INL_H_
#endif

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// lanesUp: lane i of the result is lane i - kCount of v, and lanes of `fill` come in below.
// lanesDown: lane i of the result is lane i + kCount of v, and lanes of `fill` come in above.
// kCount is a power of two and at most half the number of lanes, or 1.

#if HWY_TARGET == HWY_SCALAR

template <int kCount, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesUp(D /*d*/, V /*v*/, V fill) {
    return fill;
}

template <int kCount, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesDown(D /*d*/, V /*v*/, V fill) {
    return fill;
}

#elif HWY_ARCH_X86 && HWY_MAX_BYTES == 64

template <int kCount, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesUp(D /*d*/, V v, V fill) {
    constexpr int kBytes = kCount * static_cast<int>(sizeof(hn::TFromD<D>));
    if constexpr (kBytes % 4 == 0)
        return V{_mm512_alignr_epi32(v.raw, fill.raw, 16 - kBytes / 4)};
    else
        return V{_mm512_alignr_epi8(v.raw, _mm512_alignr_epi64(v.raw, fill.raw, 6), 16 - kBytes)};
}

template <int kCount, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesDown(D /*d*/, V v, V fill) {
    constexpr int kBytes = kCount * static_cast<int>(sizeof(hn::TFromD<D>));
    if constexpr (kBytes % 4 == 0)
        return V{_mm512_alignr_epi32(fill.raw, v.raw, kBytes / 4)};
    else
        return V{_mm512_alignr_epi8(_mm512_alignr_epi64(fill.raw, v.raw, 2), v.raw, kBytes)};
}

#elif HWY_ARCH_X86 && HWY_MAX_BYTES == 32

template <int kCount, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesUp(D /*d*/, V v, V fill) {
    constexpr int kBytes = kCount * static_cast<int>(sizeof(hn::TFromD<D>));
    const auto blockUp = _mm256_permute2x128_si256(v.raw, fill.raw, 0x03);
    if constexpr (kBytes == 16)
        return V{blockUp};
    else
        return V{_mm256_alignr_epi8(v.raw, blockUp, 16 - kBytes)};
}

template <int kCount, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesDown(D /*d*/, V v, V fill) {
    constexpr int kBytes = kCount * static_cast<int>(sizeof(hn::TFromD<D>));
    const auto blockDown = _mm256_permute2x128_si256(v.raw, fill.raw, 0x21);
    if constexpr (kBytes == 16)
        return V{blockDown};
    else
        return V{_mm256_alignr_epi8(blockDown, v.raw, kBytes)};
}

#else

template <int kCount, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesUp(D d, V v, V fill) {
    return hn::CombineShiftRightBytes<16 - kCount* static_cast<int>(sizeof(hn::TFromD<D>))>(d, v,
                                                                                            fill);
}

template <int kCount, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesDown(D d, V v, V fill) {
    return hn::CombineShiftRightBytes<kCount* static_cast<int>(sizeof(hn::TFromD<D>))>(d, fill, v);
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#endif
