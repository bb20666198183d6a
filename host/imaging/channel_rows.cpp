#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/imaging/channel_rows.cpp"
#include "host/imaging/channel_rows.h"

#include <cstddef>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace channel_rows {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using ByteTag = hn::ScalableTag<std::uint8_t>;

/// The channels of a vector of pixels.
template <int kChannels>
struct Pixels {
    hn::Vec<ByteTag> channel[kChannels];

    static Pixels load(ByteTag d, const unsigned char* at) {
        Pixels p;
        if constexpr (kChannels == 1)
            p.channel[0] = hn::LoadU(d, at);
        else if constexpr (kChannels == 2)
            hn::LoadInterleaved2(d, at, p.channel[0], p.channel[1]);
        else if constexpr (kChannels == 3)
            hn::LoadInterleaved3(d, at, p.channel[0], p.channel[1], p.channel[2]);
        else
            hn::LoadInterleaved4(d, at, p.channel[0], p.channel[1], p.channel[2], p.channel[3]);
        return p;
    }

    void store(ByteTag d, unsigned char* at) const {
        if constexpr (kChannels == 1)
            hn::StoreU(channel[0], d, at);
        else if constexpr (kChannels == 2)
            hn::StoreInterleaved2(channel[0], channel[1], d, at);
        else if constexpr (kChannels == 3)
            hn::StoreInterleaved3(channel[0], channel[1], channel[2], d, at);
        else
            hn::StoreInterleaved4(channel[0], channel[1], channel[2], channel[3], d, at);
    }
};

#if HWY_TARGET != HWY_SCALAR  // where no word holds two bytes

using WordTag = hn::Repartition<std::uint16_t, ByteTag>;

/// The levels of samples in the low bytes of words, all three channels.
HWY_INLINE hn::Vec<WordTag> levels(const hn::Vec<WordTag>* samples, const LumaWeights& weights) {
    const WordTag d;
    auto high = hn::Set(d, 32);
    auto low = hn::Zero(d);
#pragma GCC unroll 3
    for (int c = 0; c < 3; ++c) {
        high = hn::Add(high, hn::Mul(samples[c], hn::Set(d, weights.high[c])));
        low = hn::Add(low, hn::Mul(samples[c], hn::Set(d, weights.low[c])));
    }
    return hn::ShiftRight<6>(hn::Add(high, hn::ShiftRight<8>(low)));
}

template <int kChannels>
HWY_INLINE hn::Vec<ByteTag> levelsOf(const unsigned char* rgb, const LumaWeights& weights) {
    const ByteTag d;
    const WordTag dw;
    const auto pixels = Pixels<kChannels>::load(d, rgb);
    hn::Vec<WordTag> even[3];
    hn::Vec<WordTag> odd[3];
#pragma GCC unroll 3
    for (int c = 0; c < 3; ++c) {
        const auto words = hn::BitCast(dw, pixels.channel[c]);
        even[c] = hn::And(words, hn::Set(dw, 255));
        odd[c] = hn::ShiftRight<8>(words);
    }
    return hn::BitCast(d, hn::Or(levels(even, weights), hn::ShiftLeft<8>(levels(odd, weights))));
}

#endif

template <int kChannels>
void lumaOf(const unsigned char* rgb, unsigned char* grey, int width, const LumaWeights& weights) {
    int x = 0;
#if HWY_TARGET != HWY_SCALAR
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    for (; x + lanes <= width; x += lanes)
        hn::StoreU(levelsOf<kChannels>(rgb + std::ptrdiff_t{x} * kChannels, weights), d, grey + x);
#endif
    for (; x < width; ++x) {
        const unsigned char* pixel = rgb + std::ptrdiff_t{x} * kChannels;
        int high = 32;
        int low = 0;
        for (int c = 0; c < 3; ++c) {
            high += weights.high[c] * pixel[c];
            low += weights.low[c] * pixel[c];
        }
        grey[x] = static_cast<unsigned char>((high + (low >> 8)) >> 6);
    }
}

void luma(const unsigned char* rgb, int channels, unsigned char* grey, int width,
          const LumaWeights& weights) {
    if (channels == 3)
        lumaOf<3>(rgb, grey, width, weights);
    else
        lumaOf<4>(rgb, grey, width, weights);
}

/// src and dst point to the channels within their first pixels. A vector that begins there ends
/// within the pixel after its last, which therefore must exist.
template <int kFrom, int kTo>
void copyBetween(const unsigned char* src, unsigned char* dst, int width) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int x = 0;
    for (; x + lanes < width; x += lanes) {
        unsigned char* const at = dst + std::ptrdiff_t{x} * kTo;
        const auto from = Pixels<kFrom>::load(d, src + std::ptrdiff_t{x} * kFrom);
        auto to = Pixels<kTo>::load(d, at);
        to.channel[0] = from.channel[0];
        to.store(d, at);
    }
    for (; x < width; ++x) dst[std::ptrdiff_t{x} * kTo] = src[std::ptrdiff_t{x} * kFrom];
}

template <int kFrom>
void copyFrom(const unsigned char* src, unsigned char* dst, int dstChannels, int width) {
    if (dstChannels == 1) return copyBetween<kFrom, 1>(src, dst, width);
    if (dstChannels == 2) return copyBetween<kFrom, 2>(src, dst, width);
    if (dstChannels == 3) return copyBetween<kFrom, 3>(src, dst, width);
    copyBetween<kFrom, 4>(src, dst, width);
}

void copyChannel(const unsigned char* src, int srcChannels, unsigned char* dst, int dstChannels,
                 int width) {
    if (srcChannels == 1) return copyFrom<1>(src, dst, dstChannels, width);
    if (srcChannels == 2) return copyFrom<2>(src, dst, dstChannels, width);
    if (srcChannels == 3) return copyFrom<3>(src, dst, dstChannels, width);
    copyFrom<4>(src, dst, dstChannels, width);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace channel_rows
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace channel_rows {

HWY_EXPORT(luma);
HWY_EXPORT(copyChannel);

void luma(const unsigned char* rgb, int channels, unsigned char* grey, int width) {
    static constexpr LumaWeights kWeights = {{19, 37, 7}, {35, 145, 76}};
    HWY_DYNAMIC_DISPATCH(luma)(rgb, channels, grey, width, kWeights);
}

void copyChannel(const unsigned char* src, int srcChannels, unsigned char* dst, int dstChannels,
                 int width) {
    HWY_DYNAMIC_DISPATCH(copyChannel)(src, srcChannels, dst, dstChannels, width);
}

}  // namespace channel_rows
#endif
