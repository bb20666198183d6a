#include "numeric/deconvolution/deconv_fft_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/deconvolution/deconv_fft_columns.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/deconvolution/fft-inl.h"

// Each lane has a column: the same operations on every element, whatever the vector length.
HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

/// Butterflies from `begin` to `end` of the first pass over the columns, of whose inputs the
/// first `live` are not zero.
template <int kRadix, bool kUpperZero>
HWY_INLINE void firstColumnButterflies(const FftLevel& level, const float* block, int begin,
                                       int end, int live, float* work) {
    constexpr int kRow = HalfSpectrum::kRowFloats;
    constexpr int kInputs = kUpperZero ? kRadix / 2 : kRadix;
    for (int j = begin; j < end; ++j) {
        Complex x[kRadix];
        HWY_UNROLL(8)
        for (int q = 0; q < kInputs; ++q) {
            const float* at = block + static_cast<std::int64_t>(q * level.reach + j) * kRow;
            x[q] = q < live ? loadParts(at, at + HalfSpectrum::kBlockColumns) : zero();
        }
        dft<kUpperZero>(x);
        storeTurned(x, level, j, work);
    }
}

template <int kRadix>
void firstColumnPass(const FftPlan& plan, const float* block, int rowsIn, float* work) {
    const FftLevel& level = plan.levels[0];
    const int whole = rowsIn / level.reach;  // inputs that are live for every butterfly
    const int more = rowsIn % level.reach;   // butterflies that have one more
    const int ranges[2][3] = {{0, more, whole + 1}, {more, level.reach, whole}};
    for (const auto& range : ranges) {
        if (range[2] <= kRadix / 2)
            firstColumnButterflies<kRadix, true>(level, block, range[0], range[1], range[2], work);
        else
            firstColumnButterflies<kRadix, false>(level, block, range[0], range[1], range[2], work);
    }
}

template <int kRadix, int kResults>
HWY_INLINE void lastColumnButterflies(const FftLevel& level, const float* work, int begin, int end,
                                      int live, float* block) {
    constexpr int kRow = HalfSpectrum::kRowFloats;
    const std::int64_t blockFloats = HalfSpectrum{level.span}.blockFloats();
    for (int j = begin; j < end; ++j) {
        Complex x[kRadix];
        loadTurned(work, level, j, x);
        dft<false>(x);
        HWY_UNROLL(8)
        for (int q = 0; q < kResults; ++q) {
            float* at = block + static_cast<std::int64_t>(q * level.reach + j) * kRow;
            if (q < live) {
                storeParts(exchanged(x[q]), at, at + HalfSpectrum::kBlockColumns);
                // The same rows of the next block.
                prefetch<PrefetchFor::Reading>(at + blockFloats);
                prefetch<PrefetchFor::Reading>(at + blockFloats + kLineFloats);
            }
        }
    }
}

template <int kRadix>
void lastColumnPass(const FftPlan& plan, const float* work, int rowsOut, float* block) {
    const FftLevel& level = plan.levels[0];
    const int whole = rowsOut / level.reach;
    const int more = rowsOut % level.reach;
    const int ranges[2][3] = {{0, more, whole + 1}, {more, level.reach, whole}};
    for (const auto& range : ranges) {
        if (range[2] <= kRadix / 2)
            lastColumnButterflies<kRadix, kRadix / 2>(level, work, range[0], range[1], range[2],
                                                      block);
        else
            lastColumnButterflies<kRadix, kRadix>(level, work, range[0], range[1], range[2], block);
    }
}

// The filter is read once, in sequence, but across pages, where the processor does not look ahead.
constexpr int kFilterAhead = 128 * HalfSpectrum::kRowFloats;

/// The last forward and the first inverse pass over a group, with the filter in between.
HWY_INLINE void filterGroup(float* group, const float* filter) {
    Complex x[4];
    loadGroup(group, x);
    dft<false>(x);
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) {
        const float* factor = filter + s * HalfSpectrum::kRowFloats;
        prefetch<PrefetchFor::Reading>(factor + kFilterAhead);
        prefetch<PrefetchFor::Reading>(factor + kFilterAhead + kLineFloats);
        x[s] = exchanged(mul(x[s], loadParts(factor, factor + HalfSpectrum::kBlockColumns)));
    }
    dft<false>(x);
    storeGroupExchanged(x, group);
}

/// filter: of the block's first element.
void filterBelow(const FftPlan& plan, int level, float* block, const float* filter) {
    const FftLevel& here = plan.levels[level];
    forwardPass(here, block);
    const int stride = here.stride * kElementFloats;
    const int filterStride = here.reach * HalfSpectrum::kRowFloats;
    for (int q = 0; q < 8; ++q) {
        if (level + 1 == plan.levelCount)
            filterGroup(block + q * stride, filter + q * filterStride);
        else
            filterBelow(plan, level + 1, block + q * stride, filter + q * filterStride);
    }
    inversePass(here, block);
}

template <int kRadix>
void filterLanes(const FftPlan& plan, float* block, const float* filter, int rowsIn, int rowsOut,
                 float* work) {
    firstColumnPass<kRadix>(plan, block, rowsIn, work);
    const FftLevel& first = plan.levels[0];
    for (int q = 0; q < kRadix; ++q)
        filterBelow(plan, 1, work + q * first.stride * kElementFloats,
                    filter + static_cast<std::int64_t>(q) * first.reach * HalfSpectrum::kRowFloats);
    lastColumnPass<kRadix>(plan, work, rowsOut, block);
}

// For a first pass of radix 2, 4 and 8, indexed by radix / 4.
constexpr decltype(&filterLanes<8>) kFilterLanes[] = {filterLanes<2>, filterLanes<4>,
                                                      filterLanes<8>};

void filterColumns(const FftPlan& plan, float* block, const float* filter, int columns, int rowsIn,
                   int rowsOut, float* work) {
    for (int column = 0; column < columns; column += kLanes) {
        kFilterLanes[plan.levels[0].radix / 4](plan, block + column, filter + column, rowsIn,
                                               rowsOut, work);
    }
}

}  // namespace

constexpr DeconvFFTColumns kColumns = {filterColumns};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<DeconvFFTColumns> kDeconvFFTColumnBuilds = NUMERIC_ROW_BUILDS(kColumns);
}  // namespace numeric
#endif
