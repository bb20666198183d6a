#pragma once

#include <cstddef>
#include <cstdint>

#include "numeric/deconvolution/fft_plan.h"
#include "numeric/numeric.h"

namespace numeric {

struct DeconvFFTState {
    int transformSize;  ///< N
    int kernelSize;     ///< k
    float threshold;    ///< as given to deconvFFTInit
    float* kernel;      ///< k x k weights, row-major; with their sums, see DeconvMargin
    FftPlan* transformSpec;
    float* transformWork;  ///< a row or column of transforms, as wide as a vector
    float* paddedArray;    ///< margin rows and sides of the region, see DeconvFFTRows
    float* spectrumArray;  ///< half spectrum of the region's rows, see HalfSpectrum
    float* inverseFilter;  ///< the filter of every frequency of the half spectrum
};

/// How the half spectrum of a real N x N image is stored.
///
/// The spectrum of real data repeats itself conjugated at the negative frequencies, so one column
/// of each pair is kept: column 4 q + s has the frequency of element s of quad q's group (see
/// FftPlan). Quad 0 has columns 0, N/4, N/8 and 3 N/8; column N/2 stands alone at the end.
///
/// 16 columns make a block: for each row 16 real parts, then 16 imaginary parts. The layout is the
/// same for every vector length. Rows of the filter are in the order of the plan's elements.
struct HalfSpectrum {
    static constexpr int kBlockColumns = 16;
    static constexpr int kRowFloats = 2 * kBlockColumns;

    int length;

    int blockCount() const { return length / (2 * kBlockColumns) + 1; }
    /// Columns in use of a block: only the last one is not full.
    int columnsOfBlock(int block) const { return block + 1 < blockCount() ? kBlockColumns : 1; }

    /// Rows of a block of the region's spectrum: those of the last group of rows may reach beyond
    /// the transform, and no two blocks shall start in the same cache sets.
    int blockRows() const { return length + 36; }
    std::int64_t blockFloats() const { return std::int64_t{kRowFloats} * blockRows(); }
    std::int64_t filterBlockFloats() const { return std::int64_t{kRowFloats} * length; }
};

/// Small transforms run at the plan's smallest length.
inline int planLength(int transformSize) {
    return transformSize > FftPlan::kSmallestLength ? transformSize : FftPlan::kSmallestLength;
}

/// Arrays lie on cache lines inside their allocations, which are larger by kCacheLine bytes.
inline constexpr int kCacheLine = 64;
inline float* onCacheLine(float* block) {
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t gap = (kCacheLine - address % kCacheLine) % kCacheLine;
    return block + gap / sizeof(float);
}

/// Fills state.inverseFilter from state.kernel; the other arrays are used as scratch.
void makeInverseFilter(DeconvFFTState& state);

}  // namespace numeric
