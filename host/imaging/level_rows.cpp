#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/imaging/level_rows.cpp"
#include "host/imaging/level_rows.h"

#include <algorithm>

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

/// How far ahead to fetch: about a row, which the processor does not do across pages.
constexpr int kAhead = 2048;

// Up to the addition of a half there are four roundings (of the difference, of the scale, of the
// product, of lo's distance from a sample: exact), each by 2^-24 of 255 at most, and that of the
// sum is 2^-17 at most: together less than 2^-14.
constexpr float kDoubt = 1.0F / 8192;

/// Whether every level of the block is beyond doubt; the block is written in any case.
bool blockToLevels(const float* in, unsigned char* out, float lo, float scale) {
    const FloatTag d;
    const IntTag di;
    const ByteTag db;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto zero = hn::Zero(d);
    const auto half = hn::Set(d, 0.5F);
    const auto highest = hn::Set(d, 255.0F);
    auto farthest = zero;
#pragma GCC unroll 4
    for (int x = 0; x < kBlock; x += lanes) {
        const auto scaled =
            hn::Mul(hn::Sub(hn::LoadU(d, in + x), hn::Set(d, lo)), hn::Set(d, scale));
        const auto positive = hn::IfThenElseZero(hn::Gt(scaled, zero), scaled);  // NaN becomes 0
        const auto raised = hn::Add(hn::Min(positive, highest), half);
        const auto levels = hn::ConvertTo(di, raised);  // rounds towards 0
        const auto fromMiddle = hn::Sub(hn::Sub(raised, hn::ConvertTo(d, levels)), half);
        farthest = hn::Max(farthest, hn::Abs(fromMiddle));
        hn::StoreU(hn::DemoteTo(db, levels), db, out + x);
    }
    return hn::AllTrue(d, hn::Lt(farthest, hn::Set(d, 0.5F - kDoubt)));
}

int toLevels(const float* in, unsigned char* out, int width, float lo, float scale) {
    if (width < kBlock) return 0;
    for (int x = 0; x < width; x += kBlock) {
        for (int line = 0; line < kBlock; line += 16) __builtin_prefetch(in + x + kAhead + line);
        // The last block may begin among samples that are done already.
        const int begin = std::min(x, width - kBlock);
        if (!blockToLevels(in + begin, out + begin, lo, scale)) return x;
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
