// The end of a row, past which the bytes are not ours, for one target at a time.

#if defined(NUMERIC_ROW_ENDS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_ROW_ENDS_INL_H_
#undef NUMERIC_ROW_ENDS_INL_H_
#else
#define NUMERIC_ROW_ENDS_INL_H_
#endif

#include <cstring>

#include "hwy/highway.h"
#include "numeric/base/bit_rows.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// A vector of which only the first `count` lanes exist in memory; the others are 0.
template <class D, class T = hn::TFromD<D>>
HWY_INLINE hn::Vec<D> loadFirst(D d, const T* from, int count) {
    const int lanes = static_cast<int>(hn::Lanes(d));
    if (count >= lanes) return hn::LoadU(d, from);
    HWY_ALIGN T buffer[hn::MaxLanes(d)] = {};
    if (count > 0) std::memcpy(buffer, from, static_cast<std::size_t>(count) * sizeof(T));
    return hn::Load(d, buffer);
}

template <class D, class T = hn::TFromD<D>>
HWY_INLINE void storeFirst(hn::Vec<D> v, D d, T* to, int count) {
    const int lanes = static_cast<int>(hn::Lanes(d));
    if (count >= lanes) return hn::StoreU(v, d, to);
    HWY_ALIGN T buffer[hn::MaxLanes(d)];
    hn::Store(v, d, buffer);
    if (count > 0) std::memcpy(to, buffer, static_cast<std::size_t>(count) * sizeof(T));
}

/// kCount bytes of a row of which only the first `count` exist: themselves, or `padded` with them
/// and `fill`.
template <int kCount>
HWY_INLINE const unsigned char* wholeBytes(const unsigned char* row, int count, unsigned char fill,
                                           unsigned char (&padded)[kCount]) {
    if (count >= kCount) return row;
    std::memset(padded, fill, kCount);
    std::memcpy(padded, row, static_cast<std::size_t>(count));
    return padded;
}

/// One bit for each lane, the first one lowest.
template <class D>
HWY_INLINE BitWord toBits(D d, hn::Mask<D> mask) {
    BitWord bits = 0;
    hn::StoreMaskBits(d, mask, reinterpret_cast<unsigned char*>(&bits));
    return bits;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#endif
