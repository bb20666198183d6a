#include "numeric/deconvolution/deconv_fft.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "numeric/base/alloc.h"
#include "numeric/base/checks.h"
#include "numeric/base/views.h"
#include "numeric/deconvolution/deconv_fft_rows.h"
#include "numeric/deconvolution/deconv_margin.h"

// Deconvolution in the frequency domain: transform the region, multiply by the inverse filter that
// Init made of the kernel (deconv_fft_filter.cpp), transform back. Real transforms throughout.
//
//   region + margin       groups of rows          half spectrum           columns of a block
//   (deconv_margin.cpp)   2 x lanes, lane = row   16 columns a block      lane = column
//   +-----------+         +-----------+           +----+----+----+        forward, x filter, back
//   |           |  rows   |===========|  forward  |    |    |    |        (deconv_fft_columns.cpp)
//   |           |  --->   |===========|  ------>  |    |    |    |  <-->
//   +-----------+         +-----------+           +----+----+----+
//         ^                                              |
//         +---------- threshold, back, by groups --------+   (deconv_fft_rows.cpp)
//
// Passes and their order stand in fft_plan.cpp, the butterflies in fft-inl.h.
namespace numeric {

const SlotTable<DeconvFFTRows> kDeconvFFTRowSlots(kDeconvFFTRowBuilds);
const SlotTable<DeconvFFTColumns> kDeconvFFTColumnSlots(kDeconvFFTColumnBuilds);

namespace {

constexpr int kLargestOrder = 30;
constexpr int kMostRows = 2 * kMostLanes;  // of a group

/// 2 to the power of the order, or the largest int if that exceeds it.
int transformSizeOfOrder(int order) {
    const double size = std::ldexp(1.0, order);
    constexpr int kLargest = std::numeric_limits<int>::max();
    return size > kLargest ? kLargest : static_cast<int>(size);
}

/// Room for `count` floats from the next cache line on, or null.
float* allocFloats(std::int64_t count) {
    return allocArray<float>(count, kCacheLine);
}

struct FreeState {
    void operator()(DeconvFFTState* state) const { deconvFFTFree(state); }
};

/// The padded array as the row transforms read it. Only what is not in the region itself is
/// written out: the rows above and below it, and the columns beside a group of rows.
class PaddedRows {
public:
    PaddedRows(PlaneView<const float> region, const DeconvMargin& margin, DeconvFFTState& state)
        : m_region(region),
          m_margin(margin),
          m_length(state.transformSpec->length),
          m_marginRows(onCacheLine(state.paddedArray)) {
        if (state.transformSize < m_length) {
            repeatRegion(state.transformSize);
            return;
        }
        m_in.columns = region.width;
        m_in.leftColumns = margin.offset();
        m_in.rightColumns = margin.extendedWidth() - region.width - margin.offset();
        m_rowCount = margin.extendedHeight();
        const int sideColumns = m_in.leftColumns + m_in.rightColumns;
        m_ratios = m_marginRows + static_cast<std::int64_t>(sideColumns) * m_length;
        m_sides = m_ratios + sideColumns;
        for (int y = 0; y < m_rowCount; ++y)
            if (isMargin(y)) margin.extendRow(nearestRow(y), y, marginRow(y));
        for (int side = 0; side < sideColumns; ++side)
            m_ratios[side] = margin.ratio(sideColumn(side), firstInnerRow());
    }

    int rowCount() const { return m_rowCount; }

    /// The 2 x lanes rows from `first` on, the last row again in place of those beyond it.
    RowsIn group(int first, int lanes) {
        const int rows = 2 * lanes;
        for (int i = 0; i < lanes; ++i) {
            setRow(i, first + 2 * i, rows);
            setRow(lanes + i, first + 2 * i + 1, rows);
            m_next[i] = rowStart(first + rows + 2 * i);
            m_next[lanes + i] = rowStart(first + rows + 2 * i + 1);
        }
        m_in.rows = m_rows;
        m_in.next = first + rows < m_rowCount ? m_next : nullptr;
        m_in.sides = m_sides;
        return m_in;
    }

private:
    /// A transform below the plan's smallest length runs on a padded array that repeats until it
    /// has that length: its result repeats in the same way.
    void repeatRegion(int transformSize) {
        m_in.columns = m_rowCount = m_length;
        m_isRepeated = true;
        for (int y = 0; y < m_length; ++y) {
            float* row = marginRow(y);
            std::fill_n(row, m_length, 0.0F);
            const int source = y % transformSize;
            if (source >= m_margin.extendedHeight()) continue;
            m_margin.extendRow(nearestRow(source), source, row);
            for (int x = transformSize; x < m_length; ++x) row[x] = row[x - transformSize];
        }
    }

    /// Rows of the extended region from here on, up to the region's height, are so far from the
    /// borders that all of them have the same ratios in their margin columns.
    int firstInnerRow() const { return m_margin.extendedHeight() - m_region.height; }
    bool isInner(int y) const { return y >= firstInnerRow() && y < m_region.height; }

    bool isMargin(int y) const {
        return m_isRepeated || y < m_margin.offset() || y >= m_margin.offset() + m_region.height;
    }
    const float* nearestRow(int y) const { return m_region.row(m_margin.nearestRow(y)); }
    float* marginRow(int y) const {
        const bool below = !m_isRepeated && y >= m_margin.offset();
        return m_marginRows + static_cast<std::int64_t>(below ? y - m_region.height : y) * m_length;
    }
    int sideColumn(int side) const {
        return side < m_in.leftColumns ? side : side + m_region.width;
    }

    /// The first pixel of a row that stands in the region's columns.
    const float* rowStart(int y) const {
        const int row = std::min(y, m_rowCount - 1);
        return isMargin(row) ? marginRow(row) + m_in.leftColumns : nearestRow(row);
    }

    void setRow(int slot, int y, int rows) {
        y = std::min(y, m_rowCount - 1);
        m_rows[slot] = rowStart(y);
        for (int side = 0; side < m_in.leftColumns + m_in.rightColumns; ++side) {
            const int x = sideColumn(side);
            float& value = m_sides[rows * side + slot];
            if (isMargin(y)) {
                value = marginRow(y)[x];
            } else {
                const float pixel = m_rows[slot][side < m_in.leftColumns ? 0 : m_in.columns - 1];
                value = pixel * (isInner(y) ? m_ratios[side] : m_margin.ratio(x, y));
            }
        }
    }

    PlaneView<const float> m_region;
    const DeconvMargin& m_margin;
    int m_length;
    float* m_marginRows;
    float* m_ratios = nullptr;
    float* m_sides = nullptr;
    bool m_isRepeated = false;
    int m_rowCount = 0;
    RowsIn m_in{};
    const float* m_rows[kMostRows];
    const float* m_next[kMostRows];
};

/// The region's rows of a group, and a row to waste in place of those beyond it.
void setRowsOut(const PlaneView<float>& region, int first, int lanes, float* wasted, float** rows) {
    for (int i = 0; i < 2 * lanes; ++i) {
        const int y = first + (i < lanes ? 2 * i : 2 * (i - lanes) + 1);
        rows[i] = y < region.height ? region.row(y) : wasted;
    }
}

}  // namespace

KernelStatus deconvFFTInit(DeconvFFTState** out, const float* kernel, int kernelSize, int fftOrder,
                           float threshold) {
    if (!kernel || !out) return NullPointer;
    const int transformSize = transformSizeOfOrder(fftOrder);
    if (kernelSize < 1 || kernelSize > transformSize) return BadSize;
    if (threshold < 0) return BadArgument;
    if (fftOrder < 0 || fftOrder > kLargestOrder) return BadOrder;

    void* block = allocAligned(sizeof(DeconvFFTState));
    if (!block) return NoMemory;
    std::unique_ptr<DeconvFFTState, FreeState> state(new (block) DeconvFFTState{});
    state->transformSize = transformSize;
    state->kernelSize = kernelSize;
    state->threshold = threshold;

    const int length = planLength(transformSize);
    const std::int64_t arrayFloats = std::int64_t{2} * length * length;
    state->inverseFilter = allocFloats(arrayFloats);
    if (!state->inverseFilter) return NoMemory;
    state->spectrumArray = allocFloats(arrayFloats);
    if (!state->spectrumArray) return NoMemory;
    state->paddedArray = allocFloats(arrayFloats);
    if (!state->paddedArray) return NoMemory;
    state->transformSpec = makeFftPlan(length);
    if (!state->transformSpec) return NoMemory;
    state->transformWork =
        allocFloats(std::int64_t{2} * kMostLanes * state->transformSpec->storedLength);
    if (!state->transformWork) return NoMemory;
    state->kernel = copyKernelWithSums(kernel, kernelSize);
    if (!state->kernel) return NoMemory;

    makeInverseFilter(*state);
    // The column that stands alone is transformed together with empty ones.
    const HalfSpectrum layout{length};
    std::fill_n(onCacheLine(state->spectrumArray), layout.blockFloats() * layout.blockCount(),
                0.0F);
    *out = state.release();
    return Success;
}

KernelStatus deconvFFT(const float* src, int srcStep, float* dst, int dstStep, int roiWidth,
                       int roiHeight, DeconvFFTState* state) {
    if (!src || !dst || !state) return NullPointer;
    if (checkSize(roiWidth, roiHeight) != Success) return BadSize;
    const int largestRoi = state->transformSize - state->kernelSize + 1;
    if (roiWidth > largestRoi || roiHeight > largestRoi) return BadSize;
    const KernelStatus status = checkFloatSteps(roiWidth, {srcStep, dstStep});
    if (status != Success) return status;

    const DeconvFFTRows& rowTransforms = kDeconvFFTRowSlots.selected();
    const auto filterColumns = kDeconvFFTColumnSlots.selected().filterColumns;
    const FftPlan& plan = *state->transformSpec;
    const HalfSpectrum layout{plan.length};
    float* spectrum = onCacheLine(state->spectrumArray);
    float* work = onCacheLine(state->transformWork);
    const int groupRows = 2 * rowTransforms.lanes;

    const DeconvMargin margin(state->kernel, state->kernelSize, state->threshold, roiWidth,
                              roiHeight);
    PaddedRows padded({src, srcStep, roiWidth, roiHeight}, margin, *state);
    for (int y = 0; y < padded.rowCount(); y += groupRows)
        rowTransforms.forwardRows(plan, padded.group(y, rowTransforms.lanes), work, spectrum, y);

    const int resultRows = roiHeight + roiHeight % 2;  // rows come back in pairs
    for (int b = 0; b < layout.blockCount(); ++b)
        filterColumns(plan, spectrum + b * layout.blockFloats(),
                      onCacheLine(state->inverseFilter) + b * layout.filterBlockFloats(),
                      layout.columnsOfBlock(b), padded.rowCount(), resultRows, work);

    const PlaneView<float> region{dst, dstStep, roiWidth, roiHeight};
    float* rows[kMostRows];
    for (int y = 0; y < roiHeight; y += groupRows) {
        setRowsOut(region, y, rowTransforms.lanes, onCacheLine(state->paddedArray), rows);
        rowTransforms.inverseRows(plan, spectrum, y, work, {rows, roiWidth, state->threshold});
    }
    return Success;
}

KernelStatus deconvFFTFree(DeconvFFTState* state) {
    if (!state) return NullPointer;
    freeAligned(state->inverseFilter);
    freeAligned(state->spectrumArray);
    freeAligned(state->paddedArray);
    freeAligned(state->transformWork);
    freeAligned(state->kernel);
    freeAligned(state->transformSpec);
    freeAligned(state);
    return Success;
}

}  // namespace numeric
