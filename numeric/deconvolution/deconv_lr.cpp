#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

#include "numeric/base/alloc.h"
#include "numeric/base/checks.h"
#include "numeric/base/views.h"
#include "numeric/deconvolution/deconv_lr_rows.h"
#include "numeric/deconvolution/deconv_margin.h"

// Lucy-Richardson: ratio = observed / (estimate * kernel); estimate times (ratio * transposed
// kernel); again. What the convolutions see beyond the region comes from deconv_margin.cpp.
//
// A 5 x 5 kernel that is symmetric all round is folded: several iterations run in one sweep, each
// kFoldedLag rows behind the one before it, so that a plane crosses the cache once for all of them:
//
//   row y        iteration 1:  estimate in -> sums of blurred rows -> ratio -> sums of corrections
//   row y - 4    iteration 2:       what iteration 1 has corrected ...
//   row y - 8    iteration 3: ...
//
// Any other kernel goes row by row. The inner loops of both are in deconv_lr_rows.cpp.
namespace numeric {

struct DeconvLRState {
    int pitch;
    int maxWidth, maxHeight;
    int kernelSize;
    int kernelWidth, kernelHeight;
    int anchorX, anchorY;
    float threshold;
    float* kernel;
    float* kernelTransposed;
    float* observed;
    float* estimate;
    float* blurred;
    float* correction;
};

const SlotTable<DeconvLRRows> kDeconvLRSlots(kDeconvLRBuilds);

namespace {

/// Iterations that run behind each other in one sweep, so that what they share stays in the cache.
constexpr int kLevels = 6;

// --- State ---------------------------------------------------------------------------------

void freeState(DeconvLRState* state) {
    freeAligned(state->correction);
    freeAligned(state->blurred);
    freeAligned(state->estimate);
    freeAligned(state->observed);
    freeAligned(state->kernelTransposed);
    freeAligned(state->kernel);
    freeAligned(state);
}

bool allocArrays(DeconvLRState& state, const float* kernel) {
    const std::int64_t k = state.kernelSize;
    const std::int64_t count = (state.maxWidth + k) * (state.maxHeight + k);
    return (state.kernel = copyKernelWithSums(kernel, state.kernelSize)) &&
           (state.kernelTransposed = allocArray<float>(k * k)) &&
           (state.observed = allocArray<float>(count)) &&
           (state.estimate = allocArray<float>(count)) &&
           (state.blurred = allocArray<float>(count)) &&
           (state.correction = allocArray<float>(count));
}

// --- One run -------------------------------------------------------------------------------

/// The extended region inside the working arrays: row and column 0 lie offset() rows and columns
/// in, so that the kernel reaches past every edge without leaving the array. The last of the
/// kernelSize rows that an array has to spare lets vectors run on past the end of a row.
class Run {
public:
    Run(const DeconvLRState& state, const DeconvMargin& margin, PlaneView<const float> src,
        PlaneView<float> dst)
        : m_state(state),
          m_margin(margin),
          m_src(src),
          m_dst(dst),
          m_rows(kDeconvLRSlots.selected()),
          m_width(margin.extendedWidth()),
          m_height(margin.extendedHeight()) {}

    void iterate(int iterations) {
        surroundWithZeros(m_state.observed);
        surroundWithZeros(m_state.estimate);
        FoldedKernel kernel;
        if (fold(kernel))
            iterateFolded(kernel, iterations);
        else
            iterateAny(iterations);
    }

private:
    float* row(float* plane, std::ptrdiff_t y) const {
        const int offset = m_margin.offset();
        return plane + (y + offset) * m_state.pitch + offset;
    }

    void surroundWithZeros(float* plane) const {
        const int offset = m_margin.offset();
        const int anchor = m_state.anchorX;
        for (int y = -offset; y < m_height + anchor; ++y) {
            float* pixels = row(plane, y);
            const bool inside = y >= 0 && y < m_height;
            std::fill_n(pixels - offset, inside ? offset : offset + m_width, 0.0F);
            std::fill_n(pixels + m_width, anchor, 0.0F);
        }
    }

    void observe(int y) const {
        m_margin.extendRow(m_src.row(m_margin.nearestRow(y)), y, row(m_state.observed, y));
    }

    void writeResult(int y) const {
        const int regionRow = y - m_margin.offset();
        if (regionRow < 0 || regionRow >= m_dst.height) return;
        m_rows.resultRow(row(m_state.estimate, y) + m_margin.offset(), m_state.threshold,
                         m_dst.row(regionRow), m_dst.width);
    }

    bool fold(FoldedKernel& folded) const;
    void iterateFolded(const FoldedKernel& kernel, int iterations) const;
    void sweep(const FoldedKernel& kernel, int levels, bool first, bool last) const;
    FoldedBlock block(int front, float* estimate) const;
    int mostLevels() const;

    void iterateAny(int iterations) const;

    std::ptrdiff_t sumsPitch() const {
        const std::ptrdiff_t vectors = (m_width + kFoldedReach + kMostLanes - 1) / kMostLanes;
        return vectors * kMostLanes;
    }

    const DeconvLRState& m_state;
    const DeconvMargin& m_margin;
    PlaneView<const float> m_src;
    PlaneView<float> m_dst;
    const DeconvLRRows& m_rows;
    int m_width, m_height;
};

/// Whether the kernel is one of those that the folded iteration takes.
bool Run::fold(FoldedKernel& folded) const {
    constexpr int kSize = 2 * kFoldedReach + 1;
    if (m_state.kernelSize != kSize) return false;
    const auto weight = [this](int dy, int dx) {
        return m_state.kernel[(kFoldedReach + dy) * kSize + kFoldedReach + dx];
    };
    for (int dy = -kFoldedReach; dy <= kFoldedReach; ++dy)
        for (int dx = -kFoldedReach; dx <= kFoldedReach; ++dx) {
            const int near = std::min(std::abs(dy), std::abs(dx));
            const int far = std::max(std::abs(dy), std::abs(dx));
            if (weight(dy, dx) != weight(near, far)) return false;
        }
    folded = {weight(0, 0), weight(0, 1), weight(0, 2), weight(1, 1), weight(1, 2), weight(2, 2)};
    return true;
}

/// Each level of a sweep keeps its lines of sums in the arrays blurred and correction. The smallest
/// arrays have room for one level, since they are at least twice the kernel wide and high.
int Run::mostLevels() const {
    const std::ptrdiff_t count =
        static_cast<std::ptrdiff_t>(m_state.pitch) * (m_state.maxHeight + m_state.kernelSize);
    return static_cast<int>(std::min<std::ptrdiff_t>(kLevels, count / (kFoldedSums * sumsPitch())));
}

void Run::iterateFolded(const FoldedKernel& kernel, int iterations) const {
    const int most = mostLevels();
    for (int done = 0; done < iterations;) {
        const int levels = std::min(most, iterations - done);
        sweep(kernel, levels, done == 0, done + levels == iterations);
        done += levels;
    }
}

/// What there is to do for rows front ... front + kFoldedBlockRows - 1, some of which may lie
/// outside the region.
FoldedBlock Run::block(int front, float* estimate) const {
    const int first = std::max(front, 0);
    const int end = std::min(front + kFoldedBlockRows, m_height + kFoldedLag);
    FoldedBlock result{};
    result.firstLeaving = std::max(0, kFoldedReach - first);
    result.enteringRows = std::max(0, std::min(end, m_height + kFoldedReach) - first);
    result.leavingRows = std::max(0, end - first - result.firstLeaving);
    result.entering = row(estimate, first);
    result.observed = row(m_state.observed, first - kFoldedReach);
    const int leaving = first + result.firstLeaving - kFoldedLag;
    result.leaving = row(estimate, leaving);
    result.corrected = row(m_state.estimate, leaving);
    result.pitch = m_state.pitch;
    result.sumsPitch = sumsPitch();
    result.width = m_width;
    result.threshold = m_state.threshold;
    return result;
}

/// Several iterations in one pass over the planes, each kFoldedLag rows behind the one before it.
void Run::sweep(const FoldedKernel& kernel, int levels, bool first, bool last) const {
    const std::ptrdiff_t levelSums = kFoldedSums * sumsPitch();
    std::fill_n(m_state.blurred, levels * levelSums, 0.0F);
    std::fill_n(m_state.correction, levels * levelSums, 0.0F);
    for (int front = 0; front < m_height + levels * kFoldedLag; front += kFoldedBlockRows) {
        if (first)
            for (int y = front; y < std::min(front + kFoldedBlockRows, m_height); ++y) observe(y);
        for (int level = 0; level < levels; ++level) {
            const int levelFront = front - level * kFoldedLag;
            if (levelFront + kFoldedBlockRows <= 0 || levelFront >= m_height + kFoldedLag) continue;
            // The first estimate is the observation, which must stay.
            float* estimate = first && level == 0 ? m_state.observed : m_state.estimate;
            FoldedBlock work = block(levelFront, estimate);
            work.blurSums = m_state.blurred + level * levelSums;
            work.correctionSums = m_state.correction + level * levelSums;
            m_rows.foldedBlock(kernel, work);
        }
        if (last) {
            const int done = front - levels * kFoldedLag;
            for (int y = done; y < done + kFoldedBlockRows; ++y) writeResult(y);
        }
    }
}

/// Row by row: as soon as the ratios are known that a row of the estimate needs, and no ratio needs
/// the row any more, it is corrected in place.
void Run::iterateAny(int iterations) const {
    const DeconvLRState& s = m_state;
    const int offset = m_margin.offset();
    surroundWithZeros(s.blurred);
    for (int y = 0; y < m_height; ++y) observe(y);
    for (int i = 0; i < iterations; ++i) {
        float* estimate = i == 0 ? s.observed : s.estimate;
        for (int y = 0; y < m_height + offset; ++y) {
            if (y < m_height)
                m_rows.blurRow(
                    {row(estimate, y - offset) - offset, s.pitch, s.kernel, s.kernelSize, m_width},
                    row(s.observed, y), s.threshold, row(s.blurred, y));
            const int ready = y - offset;
            if (ready < 0) continue;
            m_rows.correctRow({row(s.blurred, ready - offset) - offset, s.pitch, s.kernelTransposed,
                               s.kernelSize, m_width},
                              row(estimate, ready), row(s.estimate, ready));
        }
    }
    for (int y = 0; y < m_height; ++y) writeResult(y);
}

}  // namespace

KernelStatus deconvLRInit(DeconvLRState** out, const float* kernel, int kernelSize, int maxWidth,
                          int maxHeight, float threshold) {
    if (!out || !kernel) return NullPointer;
    if (kernelSize < 1 || maxWidth < 1 || maxHeight < 1) return BadSize;
    if (kernelSize > maxHeight || kernelSize > maxWidth) return BadSize;
    if (threshold < 0) return BadArgument;
    if (maxWidth > std::numeric_limits<int>::max() - kernelSize) return NoMemory;

    void* block = allocAligned(sizeof(DeconvLRState));
    if (!block) return NoMemory;
    const int anchor = (kernelSize - 1) / 2;
    auto* state = new (block) DeconvLRState{maxWidth + kernelSize,
                                            maxWidth,
                                            maxHeight,
                                            kernelSize,
                                            kernelSize,
                                            kernelSize,
                                            anchor,
                                            anchor,
                                            threshold,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr};
    if (!allocArrays(*state, kernel)) {
        freeState(state);
        return NoMemory;
    }
    const std::ptrdiff_t k = kernelSize;
    for (std::ptrdiff_t i = 0; i < k; ++i)
        for (std::ptrdiff_t j = 0; j < k; ++j)
            state->kernelTransposed[i * k + j] = kernel[j * k + i];
    *out = state;
    return Success;
}

KernelStatus deconvLR(const float* src, int srcStep, float* dst, int dstStep, int roiWidth,
                      int roiHeight, int iterations, DeconvLRState* state) {
    if (!src || !dst || !state) return NullPointer;
    if (roiWidth < 1 || roiHeight < 1) return BadSize;
    const int surplus = state->kernelSize - 1;
    if (state->maxWidth - surplus < roiWidth || state->maxHeight - surplus < roiHeight)
        return BadSize;
    const KernelStatus steps = checkFloatSteps(roiWidth, {srcStep, dstStep});
    if (steps != Success) return steps;
    if (iterations < 1) return BadArgument;

    const DeconvMargin margin(state->kernel, state->kernelSize, state->threshold, roiWidth,
                              roiHeight);
    Run(*state, margin, {src, srcStep, roiWidth, roiHeight}, {dst, dstStep, roiWidth, roiHeight})
        .iterate(iterations);
    return Success;
}

KernelStatus deconvLRFree(DeconvLRState* state) {
    if (!state) return NullPointer;
    freeState(state);
    return Success;
}

}  // namespace numeric
