#include "numeric/deconvolution/deconv_margin.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "numeric/base/alloc.h"

namespace numeric {
namespace {

// The kernel copy, then entry (i, j) of a (k + 1) x (k + 1) table: the sum of the first i rows of
// the first j columns. In double, so that the difference of two entries is as good as a sum.
std::int64_t sumsOffset(int kernelSize) {
    const std::int64_t kernelBytes = std::int64_t{4} * kernelSize * kernelSize;
    return (kernelBytes + 7) / 8 * 8;
}

}  // namespace

float* copyKernelWithSums(const float* kernel, int kernelSize) {
    constexpr int kLargestSize = 1 << 14;  // far beyond the int range of an allocation
    if (kernelSize > kLargestSize) return nullptr;
    const int columns = kernelSize + 1;
    const std::int64_t bytes = sumsOffset(kernelSize) + std::int64_t{8} * columns * columns;
    void* block = allocArray<unsigned char>(bytes);
    if (!block) return nullptr;

    float* copy = static_cast<float*>(block);
    std::copy_n(kernel, static_cast<std::int64_t>(kernelSize) * kernelSize, copy);

    auto* sums =
        reinterpret_cast<double*>(static_cast<unsigned char*>(block) + sumsOffset(kernelSize));
    std::fill_n(sums, columns, 0.0);
    for (int i = 0; i < kernelSize; ++i) {
        const double* above = sums + static_cast<std::int64_t>(i) * columns;
        double* row = sums + static_cast<std::int64_t>(i + 1) * columns;
        double rowSum = 0;
        row[0] = 0;
        for (int j = 0; j < kernelSize; ++j) {
            rowSum += kernel[static_cast<std::int64_t>(i) * kernelSize + j];
            row[j + 1] = above[j + 1] + rowSum;
        }
    }
    return copy;
}

DeconvMargin::DeconvMargin(const float* kernel, int kernelSize, float threshold, int roiWidth,
                           int roiHeight)
    : m_sums(reinterpret_cast<const double*>(reinterpret_cast<const unsigned char*>(kernel) +
                                             sumsOffset(kernelSize))),
      m_kernelSize(kernelSize),
      m_anchor((kernelSize - 1) / 2),
      m_offset(kernelSize - 1 - m_anchor),
      m_threshold(threshold),
      m_roiWidth(roiWidth),
      m_roiHeight(roiHeight) {}

int DeconvMargin::nearest(int position, int roiSize) const {
    return std::clamp(position - m_offset, 0, roiSize - 1);
}

DeconvMargin::Span DeconvMargin::overlapping(int position, int roiSize) const {
    const int centre = nearest(position, roiSize);
    return {std::max(0, m_anchor - centre), std::min(m_kernelSize, roiSize - centre + m_anchor)};
}

DeconvMargin::Span DeconvMargin::covered(int position, int roiSize) const {
    const int fromLowEdge = m_offset - position;
    if (fromLowEdge > 0) return {m_anchor + fromLowEdge, m_kernelSize};
    const int fromHighEdge = position - m_offset - roiSize + 1;
    if (fromHighEdge > 0) return {0, m_anchor + 1 - fromHighEdge};
    return overlapping(position, roiSize);
}

double DeconvMargin::sum(Span rows, Span columns) const {
    const double* top = m_sums + static_cast<std::int64_t>(rows.first) * (m_kernelSize + 1);
    const double* bottom = m_sums + static_cast<std::int64_t>(rows.end) * (m_kernelSize + 1);
    return (bottom[columns.end] - bottom[columns.first]) - (top[columns.end] - top[columns.first]);
}

float DeconvMargin::ratio(int x, int y) const {
    const bool inside =
        x >= m_offset && x < m_offset + m_roiWidth && y >= m_offset && y < m_offset + m_roiHeight;
    if (inside) return 1.0F;
    const double covers = sum(covered(y, m_roiHeight), covered(x, m_roiWidth));
    const double overlaps = sum(overlapping(y, m_roiHeight), overlapping(x, m_roiWidth));
    const bool negligible = std::abs(static_cast<float>(overlaps)) < m_threshold;
    return static_cast<float>(negligible ? covers : covers / overlaps);
}

void DeconvMargin::extendRow(const float* regionRow, int y, float* extendedRow) const {
    const auto fill = [&](int first, int end) {
        for (int x = first; x < end; ++x)
            extendedRow[x] = regionRow[nearest(x, m_roiWidth)] * ratio(x, y);
    };
    // In the middle the whole width of the kernel overlaps the region: one ratio for all pixels.
    const int middle = std::min(m_offset + m_anchor, extendedWidth());
    const int middleEnd = std::max(middle, m_roiWidth);
    fill(0, middle);
    if (middle < middleEnd) {
        const float factor = ratio(middle, y);
        const float* from = regionRow + (middle - m_offset);
        if (factor == 1.0F)
            std::copy_n(from, middleEnd - middle, extendedRow + middle);
        else
            for (int x = middle; x < middleEnd; ++x) extendedRow[x] = from[x - middle] * factor;
    }
    fill(middleEnd, extendedWidth());
}

}  // namespace numeric
