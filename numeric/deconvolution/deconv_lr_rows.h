#pragma once

#include <cstddef>

#include "numeric/base/dispatch.h"

namespace numeric {

/// A 5 x 5 kernel that is symmetric in both axes and about its diagonal: the weight at (dy, dx)
/// depends on |dy| and |dx| only, and not on which is which.
struct FoldedKernel {
    float centre, near, far;  // (0, 0), (0, 1), (0, 2)
    float nearNear, nearFar;  // (1, 1), (1, 2)
    float farFar;             // (2, 2)
};

/// Rows that one block of the folded iteration takes in at a time.
inline constexpr int kFoldedBlockRows = 8;
/// How far the kernel reaches: a row is blurred when the two rows below it have entered.
inline constexpr int kFoldedReach = 2;
/// A row is corrected when the two rows below it are blurred.
inline constexpr int kFoldedLag = 2 * kFoldedReach;
/// Lines of sums that a convolution keeps: one for each row that lacks some of the rows below it.
inline constexpr int kFoldedSums = 2 * kFoldedReach;

/// One block of one iteration with a FoldedKernel: up to kFoldedBlockRows rows of the estimate
/// enter, the same number of rows, kFoldedLag rows above them, leave corrected.
///
/// Row pointers are to column 0 of planes whose rows lie pitch floats apart and whose columns -2,
/// -1, width and width + 1 are zero. Reading runs on past the end of a row, by less than a vector.
struct FoldedBlock {
    const float* entering;     ///< the first of enteringRows estimate rows
    const float* observed;     ///< the observation kFoldedReach rows above it
    const float* leaving;      ///< the first of leavingRows rows of the estimate as it was
    float* corrected;          ///< receives what leaving becomes; may be the same plane
    float* blurSums;           ///< kFoldedSums lines that go on from block to block
    float* correctionSums;     ///< likewise
    std::ptrdiff_t pitch;      ///< of the planes
    std::ptrdiff_t sumsPitch;  ///< of the lines, at least width + kFoldedReach in whole vectors
    int width;
    int enteringRows;
    int leavingRows;
    int firstLeaving;  ///< the row of the block that lets the first one leave; no earlier row
                       ///< has a ratio, and those from enteringRows on have the ratio zero
    float threshold;
};

/// One row of an iteration with any kernel. Pointers are to the first column of the result.
struct ConvolvedRow {
    const float* input;    ///< top left of the kernelSize x kernelSize neighbourhood of column 0
    std::ptrdiff_t pitch;  ///< between its rows, in floats
    const float* kernel;   ///< row-major; its last weight goes to the first pixel of the input
    int kernelSize;
    int width;
};

/// Inner loops of the Lucy-Richardson iteration.
struct DeconvLRRows {
    void (*foldedBlock)(const FoldedKernel& kernel, const FoldedBlock& block);
    /// ratio = observed / blurred, or 0 where |blurred| <= threshold.
    void (*blurRow)(const ConvolvedRow& row, const float* observed, float threshold, float* ratio);
    /// corrected = estimate * correction, or 0 where either has vanished. The two may be the same.
    void (*correctRow)(const ConvolvedRow& row, const float* estimate, float* corrected);
    /// dst = estimate where |estimate| > threshold, else 0.
    void (*resultRow)(const float* estimate, float threshold, float* dst, int width);
};

extern const RowBuilds<DeconvLRRows> kDeconvLRBuilds;
extern const SlotTable<DeconvLRRows> kDeconvLRSlots;

}  // namespace numeric
