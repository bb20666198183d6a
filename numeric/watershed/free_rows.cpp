#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed/free_rows.cpp"
#include <cstring>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/watershed/free_rows.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using ByteTag = hn::ScalableTag<unsigned char>;
using Bytes = hn::Vec<ByteTag>;

/// The label of the first pixel of a word above the free level, or 0.
unsigned char firstHighLabel(const unsigned char* relief, const unsigned char* marker,
                             unsigned char freeLevel) {
    for (int i = 0; i < kFreeBits; ++i)
        if (relief[i] > freeLevel) return marker[i];
    return 0;
}

/// The mask of a word's free pixels. Collects in *misfits what does not fit.
HWY_INLINE std::uint64_t scanWord(const unsigned char* relief, const unsigned char* marker,
                                  const FreeKinds& kinds, Bytes* misfits) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto freeLevel = hn::Set(d, kinds.freeLevel);
    const auto highLabel = hn::Set(d, kinds.highLabel);
    std::uint64_t free = 0;
    for (int i = 0; i < kFreeBits; i += lanes) {
        const auto level = hn::LoadU(d, relief + i);
        const auto label = hn::LoadU(d, marker + i);
        const auto isFree = hn::Eq(label, hn::Zero(d));
        const auto isHigh = hn::Ne(hn::Max(level, freeLevel), freeLevel);
        const auto otherHigh = hn::IfThenElseZero(isHigh, hn::Xor(label, highLabel));
        const auto otherLevel = hn::IfThenElseZero(isFree, hn::Xor(level, freeLevel));
        *misfits = hn::Or(*misfits, hn::Or(otherHigh, otherLevel));
        std::uint64_t part = 0;
        hn::StoreMaskBits(d, isFree, reinterpret_cast<std::uint8_t*>(&part));
        free |= part << i;
    }
    return free;
}

void scan(const unsigned char* relief, const unsigned char* marker, int width, std::uint64_t* free,
          FreeKinds* kinds) {
    const ByteTag d;
    auto misfits = hn::Zero(d);
    unsigned char lastRelief[kFreeBits];
    unsigned char lastMarker[kFreeBits];
    for (int x = 0; x < width; x += kFreeBits) {
        const unsigned char* wordRelief = relief + x;
        const unsigned char* wordMarker = marker + x;
        if (x + kFreeBits > width) {  // filled up with seeds of the free level, which always fit
            std::memset(lastRelief, kinds->freeLevel, kFreeBits);
            std::memset(lastMarker, 1, kFreeBits);
            wordRelief = static_cast<const unsigned char*>(
                std::memcpy(lastRelief, wordRelief, static_cast<std::size_t>(width - x)));
            wordMarker = static_cast<const unsigned char*>(
                std::memcpy(lastMarker, wordMarker, static_cast<std::size_t>(width - x)));
        }
        if (kinds->highLabel == 0)
            kinds->highLabel = firstHighLabel(wordRelief, wordMarker, kinds->freeLevel);
        *free++ = scanWord(wordRelief, wordMarker, *kinds, &misfits);
    }
    kinds->areMixed |= !hn::AllTrue(d, hn::Eq(misfits, hn::Zero(d)));
}

}  // namespace

constexpr FreeRows kRows = {scan};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<FreeRows> kFreeBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
