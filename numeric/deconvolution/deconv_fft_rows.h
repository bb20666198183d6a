#pragma once

#include "numeric/base/dispatch.h"
#include "numeric/deconvolution/deconv_fft.h"

namespace numeric {

/// The rows of the extended region that one call transforms, two rows to a complex transform: the
/// even ones in the real parts, the odd ones in the imaginary parts.
struct RowsIn {
    /// First region pixel of each row: the even rows of the group, then the odd ones.
    const float* const* rows;
    const float* const* next;  ///< rows of the next group, to be fetched ahead; or null
    int columns;               ///< of the region
    /// Margin columns left of the region, then those right of it; for each, one value per row in
    /// the order of `rows`.
    const float* sides;
    int leftColumns;
    int rightColumns;
};

/// Where the rows that one call transforms back go, in the order of RowsIn::rows.
struct RowsOut {
    float* const* rows;
    int columns;
    float threshold;  ///< values of this magnitude or less become 0
};

// In both, work holds FftPlan::storedLength elements of 2 x lanes floats.

/// Transforms of the rows, to and from the half spectrum.
struct DeconvFFTRows {
    int lanes;  ///< row pairs that are transformed side by side: half a group of rows
    void (*forwardRows)(const FftPlan& plan, const RowsIn& in, float* work, float* spectrum,
                        int firstRow);
    void (*inverseRows)(const FftPlan& plan, const float* spectrum, int firstRow, float* work,
                        const RowsOut& out);
};

/// Transforms of the columns of one block of the half spectrum.
struct DeconvFFTColumns {
    /// Forward, times the filter, and back. The rows from rowsIn on are taken as zero, those from
    /// rowsOut on are not written.
    void (*filterColumns)(const FftPlan& plan, float* block, const float* filter, int columns,
                          int rowsIn, int rowsOut, float* work);
};

extern const RowBuilds<DeconvFFTRows> kDeconvFFTRowBuilds;
extern const RowBuilds<DeconvFFTColumns> kDeconvFFTColumnBuilds;

extern const SlotTable<DeconvFFTRows> kDeconvFFTRowSlots;
extern const SlotTable<DeconvFFTColumns> kDeconvFFTColumnSlots;

}  // namespace numeric
