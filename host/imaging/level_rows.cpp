#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/imaging/level_rows.cpp"
#include "host/imaging/level_rows.h"

#include <algorithm>
#include <cstring>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace level_rows {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::ScalableTag<float>;
using IntTag = hn::RebindToSigned<FloatTag>;
using ByteTag = hn::Rebind<unsigned char, FloatTag>;

// The difference, the scale and the product are rounded, each by 2^-24 of 255 at most: together
// less than 2^-14.
constexpr float kDoubt = 1.0F / 16384;

/// Added to a number from 0 to 255 leaves its nearest integer in the low byte.
constexpr float kIntegers = 12582912;  // 1.5 * 2^23

/// Whether no value of the block lies above lo, as in the empty parts of a picture.
bool isEmptyBlock(const float* in, float lo) {
    const FloatTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    auto above = hn::Gt(hn::LoadU(d, in), hn::Set(d, lo));
#pragma GCC unroll 4
    for (int x = lanes; x < kBlock; x += lanes)
        above = hn::Or(above, hn::Gt(hn::LoadU(d, in + x), hn::Set(d, lo)));
    return hn::AllFalse(d, above);
}

/// Whether every level of the block is beyond doubt; the block is written in any case.
bool blockToLevels(const float* in, unsigned char* out, float lo, float scale) {
    const FloatTag d;
    const hn::RebindToUnsigned<FloatTag> du;
    const ByteTag db;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto zero = hn::Zero(d);
    const auto highest = hn::Set(d, 255.0F);
    const auto integers = hn::Set(d, kIntegers);
    auto farthest = zero;
#pragma GCC unroll 4
    for (int x = 0; x < kBlock; x += lanes) {
        const auto scaled =
            hn::Mul(hn::Sub(hn::LoadU(d, in + x), hn::Set(d, lo)), hn::Set(d, scale));
        // NaN becomes 0, or stays and leaves doubt.
        const auto clamped = hn::Min(hn::Max(scaled, zero), highest);
        const auto raised = hn::Add(clamped, integers);
        farthest = hn::Max(farthest, hn::Abs(hn::Sub(clamped, hn::Sub(raised, integers))));
        hn::StoreU(hn::TruncateTo(db, hn::BitCast(du, raised)), db, out + x);
    }
    return hn::AllTrue(d, hn::Lt(farthest, hn::Set(d, 0.5F - kDoubt)));
}

int toLevels(const float* in, unsigned char* out, int width, float lo, float scale) {
    if (width < kBlock) return 0;
    for (int x = 0; x < width; x += kBlock) {
        // The last block may begin among samples that are done already.
        const int begin = std::min(x, width - kBlock);
        if (isEmptyBlock(in + begin, lo))
            std::memset(out + begin, 0, kBlock);
        else if (!blockToLevels(in + begin, out + begin, lo, scale))
            return x;
    }
    return width;
}

void toFloats(const unsigned char* in, float* out, int width, float lo, float scale) {
    const FloatTag d;
    const IntTag di;
    const ByteTag db;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto offsets = hn::Set(d, lo);
    const auto scales = hn::Set(d, scale);
    int x = 0;
#pragma GCC unroll 4
    for (; x + lanes <= width; x += lanes) {
        const auto samples = hn::ConvertTo(d, hn::PromoteTo(di, hn::LoadU(db, in + x)));
        hn::StoreU(hn::Add(offsets, hn::Mul(samples, scales)), d, out + x);
    }
    for (; x < width; ++x) out[x] = lo + static_cast<float>(in[x]) * scale;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace level_rows
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace level_rows {

HWY_EXPORT(toLevels);
HWY_EXPORT(toFloats);

int toLevels(const float* in, unsigned char* out, int width, float lo, float scale) {
    return HWY_DYNAMIC_DISPATCH(toLevels)(in, out, width, lo, scale);
}

void toFloats(const unsigned char* in, float* out, int width, float lo, float scale) {
    HWY_DYNAMIC_DISPATCH(toFloats)(in, out, width, lo, scale);
}

}  // namespace level_rows
#endif
