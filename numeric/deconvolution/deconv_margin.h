#pragma once

namespace numeric {

/// A copy of a kernelSize x kernelSize kernel, row-major, with a table of its sums after it that
/// DeconvMargin reads. From allocAligned; null when there is no memory for it.
float* copyKernelWithSums(const float* kernel, int kernelSize);

/// The region of a deconvolution with the margin that damps what the circular or cut-off
/// convolution makes of its borders.
///
///        anchor a = (k - 1) / 2        o columns    roiWidth columns    a columns
///        offset o = k - 1 - a          (rows likewise: o, roiHeight, a)
///
/// A margin pixel is the nearest region pixel times S / D. S sums the kernel over the rows and
/// columns that the margin pixel covers: at distance d outside the low edge the last o + 1 - d
/// indices of that axis, at distance d outside the high edge the first a + 1 - d, along an axis
/// on which it is not outside the indices that overlap the region when the kernel is centred on
/// the nearest pixel. D sums over the indices of both axes that overlap the region then. A D of a
/// magnitude below the threshold is taken as 1.
class DeconvMargin {
public:
    /// kernel: from copyKernelWithSums, which must outlive this.
    DeconvMargin(const float* kernel, int kernelSize, float threshold, int roiWidth, int roiHeight);

    int offset() const { return m_offset; }
    int extendedWidth() const { return m_roiWidth + m_kernelSize - 1; }
    int extendedHeight() const { return m_roiHeight + m_kernelSize - 1; }

    /// The region row that row y of the extended region is made from.
    int nearestRow(int y) const { return nearest(y, m_roiHeight); }

    /// The factor on the nearest region pixel at (x, y) of the extended region; 1 inside.
    float ratio(int x, int y) const;

    /// Row y of the extended region, extendedWidth() floats, from region row nearestRow(y).
    void extendRow(const float* regionRow, int y, float* extendedRow) const;

private:
    /// Kernel indices first <= i < end along one axis.
    struct Span {
        int first;
        int end;
    };

    int nearest(int position, int roiSize) const;
    Span overlapping(int position, int roiSize) const;
    Span covered(int position, int roiSize) const;
    double sum(Span rows, Span columns) const;

    const double* m_sums;
    int m_kernelSize;
    int m_anchor;
    int m_offset;
    float m_threshold;
    int m_roiWidth;
    int m_roiHeight;
};

}  // namespace numeric
