#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "planes.h"

/// Slow and plain versions, in double, of what the deconvolutions share.
namespace numeric::test {

/// Unsymmetric weights that are no round numbers.
inline std::vector<float> unsymmetricKernel(int size, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::vector<float> kernel(size * size);
    for (float& weight : kernel) weight = 0.02F + static_cast<float>(random() % 1000) / 3100;
    kernel[(size - 1) / 2 * (size + 1)] += 1.0F;
    return kernel;
}

/// How one axis of the extended region relates to the region: the nearest region position, the
/// kernel indices a margin pixel covers, and those that overlap the region there.
struct MarginAxis {
    int nearest;
    std::vector<int> covered, overlapping;

    MarginAxis(int position, int kernelSize, int roiSize) {
        const int anchor = (kernelSize - 1) / 2;
        const int offset = kernelSize - 1 - anchor;
        nearest = std::min(std::max(position - offset, 0), roiSize - 1);
        for (int index = 0; index < kernelSize; ++index) {
            const int reached = nearest + index - anchor;
            if (reached >= 0 && reached < roiSize) overlapping.push_back(index);
        }
        const int below = offset - position;                  // distance outside the low edge
        const int above = position - (offset + roiSize - 1);  // and outside the high edge
        for (int index = 0; index < kernelSize; ++index)
            if (below > 0 && index >= kernelSize - (offset + 1 - below)) covered.push_back(index);
        for (int index = 0; index < kernelSize; ++index)
            if (above > 0 && index < anchor + 1 - above) covered.push_back(index);
        if (below <= 0 && above <= 0) covered = overlapping;
    }
};

/// The region with its margin, row-major, (width + k - 1) x (height + k - 1).
inline std::vector<double> extendedRegion(const FloatPlane& region,
                                          const std::vector<float>& kernel, int kernelSize,
                                          float threshold) {
    const auto sum = [&](const std::vector<int>& rows, const std::vector<int>& columns) {
        double result = 0;
        for (const int row : rows)
            for (const int column : columns) result += kernel[row * kernelSize + column];
        return result;
    };
    const int width = region.width() + kernelSize - 1, height = region.height() + kernelSize - 1;
    std::vector<double> extended;
    for (int y = 0; y < height; ++y) {
        const MarginAxis rows(y, kernelSize, region.height());
        for (int x = 0; x < width; ++x) {
            const MarginAxis columns(x, kernelSize, region.width());
            double overlaps = sum(rows.overlapping, columns.overlapping);
            if (std::abs(overlaps) < threshold) overlaps = 1;
            const bool inside =
                rows.covered == rows.overlapping && columns.covered == columns.overlapping;
            const double ratio = inside ? 1 : sum(rows.covered, columns.covered) / overlaps;
            extended.push_back(region.at(columns.nearest, rows.nearest) * ratio);
        }
    }
    return extended;
}

}  // namespace numeric::test
