#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed/watershed_rows.cpp"
#include "numeric/watershed/watershed_rows.h"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using ByteTag = hn::ScalableTag<unsigned char>;

template <bool kCorners>
HWY_INLINE void markBordersOf(const unsigned char* above, const unsigned char* line,
                              const unsigned char* below, unsigned char* out, int width) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto border = hn::Set(d, 255);
    unsigned char last[HWY_MAX_BYTES];
    for (int x = 0; x < width; x += lanes) {
        const auto load = [&](const unsigned char* row, int shift) {
            return hn::LoadU(d, row + x + shift);
        };
        const auto label = load(line, 0);
        auto largest = hn::Max(hn::Max(load(line, -1), load(line, 1)),
                               hn::Max(load(above, 0), load(below, 0)));
        if (kCorners)
            largest = hn::Max(largest, hn::Max(hn::Max(load(above, -1), load(above, 1)),
                                               hn::Max(load(below, -1), load(below, 1))));
        const auto isLargest = hn::Eq(hn::Max(largest, label), label);
        if (hn::AllTrue(d, isLargest)) continue;  // most places are no border: nothing to write
        const auto result = hn::IfThenElse(isLargest, label, border);
        if (x + lanes <= width) {
            hn::StoreU(result, d, out + x);
        } else {
            hn::StoreU(result, d, last);
            for (int i = 0; x + i < width; ++i) out[x + i] = last[i];
        }
    }
}

void markBordersAcrossSides(const unsigned char* above, const unsigned char* line,
                            const unsigned char* below, unsigned char* out, int width) {
    markBordersOf<false>(above, line, below, out, width);
}

void markBorders(const unsigned char* above, const unsigned char* line, const unsigned char* below,
                 unsigned char* out, int width) {
    markBordersOf<true>(above, line, below, out, width);
}

}  // namespace

constexpr WatershedRows kRows = {markBordersAcrossSides, markBorders};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<WatershedRows> kWatershedBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
