#pragma once

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "planes.h"

/// Slow and plain versions of the deconvolutions, in double.
namespace numeric::test {

using Kernel = std::vector<float>;

inline int sizeOf(const Kernel& kernel) {
    return static_cast<int>(std::lround(std::sqrt(kernel.size())));
}

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

constexpr float kVanished = 1.1754943e-15F;

/// result(y, x) = sum of kernel(i, j) plane(y + anchor - i, x + anchor - j), 0 outside the plane.
inline std::vector<double> convolution(const std::vector<double>& plane, int width, int height,
                                       const Kernel& kernel) {
    const int size = sizeOf(kernel), anchor = (size - 1) / 2;
    std::vector<double> result(plane.size());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int i = 0; i < size; ++i)
                for (int j = 0; j < size; ++j) {
                    const int fromY = y + anchor - i, fromX = x + anchor - j;
                    if (fromY < 0 || fromY >= height || fromX < 0 || fromX >= width) continue;
                    result[y * width + x] +=
                        double{kernel[i * size + j]} * plane[fromY * width + fromX];
                }
    return result;
}

inline FloatPlane lucyRichardson(const FloatPlane& src, const Kernel& kernel, int iterations,
                                 float threshold) {
    const int size = sizeOf(kernel), offset = size - 1 - (size - 1) / 2;
    const int width = src.width() + size - 1, height = src.height() + size - 1;
    Kernel transposed(kernel.size());
    for (int i = 0; i < size; ++i)
        for (int j = 0; j < size; ++j) transposed[i * size + j] = kernel[j * size + i];

    const std::vector<double> observed = extendedRegion(src, kernel, size, threshold);
    std::vector<double> estimate = observed;
    for (int n = 0; n < iterations; ++n) {
        std::vector<double> ratio = convolution(estimate, width, height, kernel);
        for (std::size_t i = 0; i < ratio.size(); ++i)
            ratio[i] = std::abs(ratio[i]) <= threshold ? 0 : observed[i] / ratio[i];
        const std::vector<double> correction = convolution(ratio, width, height, transposed);
        for (std::size_t i = 0; i < estimate.size(); ++i) {
            const bool vanished =
                std::abs(estimate[i]) <= kVanished || std::abs(correction[i]) <= kVanished;
            estimate[i] = vanished ? 0 : estimate[i] * correction[i];
        }
    }
    FloatPlane result(src.width(), src.height());
    return result.set([&](int x, int y) {
        const double value = estimate[(y + offset) * width + x + offset];
        return std::abs(value) > threshold ? static_cast<float>(value) : 0.0F;
    });
}

inline void expectClose(const FloatPlane& expected, const FloatPlane& actual) {
    for (int y = 0; y < expected.height(); ++y)
        for (int x = 0; x < expected.width(); ++x)
            ASSERT_NEAR(expected.at(x, y), actual.at(x, y), 1e-4F * std::abs(expected.at(x, y)))
                << "at (" << x << ", " << y << ")";
}

using Complex = std::complex<double>;

/// The deconvolution by direct sums over all frequencies, in double.
class DirectDeconvolution {
public:
    DirectDeconvolution(const FloatPlane& region, const std::vector<float>& kernel, int kernelSize,
                        int transformSize, float threshold)
        : m_size(transformSize), m_height(region.height()), m_roots(transformSize) {
        for (int n = 0; n < m_size; ++n)
            m_roots[n] = std::polar(1.0, -2 * 3.14159265358979323846 * n / m_size);

        const int width = region.width() + kernelSize - 1;
        const std::vector<double> padded = extendedRegion(region, kernel, kernelSize, threshold);
        std::vector<double> placed(kernel.begin(), kernel.end());
        for (double& weight : placed)
            if (!(std::abs(weight) > threshold)) weight = 0;

        m_product = transform(padded, width);
        const std::vector<Complex> response = transform(placed, kernelSize);
        for (std::size_t i = 0; i < m_product.size(); ++i) {
            m_product[i] *= inverse(response[i], threshold);
            for (const double part : {response[i].real(), response[i].imag()})
                m_leastMargin =
                    std::min(m_leastMargin, std::abs(std::abs(part) - double{threshold}));
        }
    }

    /// Whether rounding may decide which frequencies of the kernel count: no comparison is fair.
    bool isNearThreshold() const { return m_leastMargin < 1e-5; }

    /// The sizes of all that a pixel is the sum of: its rounding errors follow this, however much
    /// of it cancels out.
    double sizeOfTerms() const {
        double sum = 0;
        for (const Complex& term : m_product) sum += std::abs(term);
        return sum / (static_cast<double>(m_size) * m_size);
    }

    /// Column x of the result before the last threshold, for the rows of the region.
    std::vector<double> column(int x) const {
        std::vector<Complex> sums(m_size);
        for (int v = 0; v < m_size; ++v)
            for (int u = 0; u < m_size; ++u)
                sums[v] += m_product[v * m_size + u] * std::conj(root(x, u));
        std::vector<double> result(m_height);
        for (int y = 0; y < m_height; ++y) {
            for (int v = 0; v < m_size; ++v) result[y] += (sums[v] * std::conj(root(y, v))).real();
            result[y] /= static_cast<double>(m_size) * m_size;
        }
        return result;
    }

private:
    Complex root(int a, int b) const { return m_roots[static_cast<long long>(a) * b % m_size]; }

    /// The two-dimensional transform of an array that starts at the origin, zero elsewhere.
    std::vector<Complex> transform(const std::vector<double>& values, int width) const {
        const int height = static_cast<int>(values.size()) / width;
        std::vector<Complex> result(static_cast<std::size_t>(m_size) * m_size);
        std::vector<Complex> row(m_size);
        for (int y = 0; y < height; ++y) {
            for (int u = 0; u < m_size; ++u) {
                row[u] = 0;
                for (int x = 0; x < width; ++x) row[u] += values[y * width + x] * root(x, u);
            }
            for (int v = 0; v < m_size; ++v)
                for (int u = 0; u < m_size; ++u) result[v * m_size + u] += row[u] * root(y, v);
        }
        return result;
    }

    static Complex inverse(Complex response, float threshold) {
        float re = static_cast<float>(response.real());
        float im = static_cast<float>(response.imag());
        if (std::abs(re) < threshold) re = 0;
        if (std::abs(im) < threshold) im = 0;
        const bool usable = std::abs(re) > threshold || std::abs(im) > threshold;
        return usable ? 1.0 / Complex(re, im) : Complex(1);
    }

    int m_size;
    int m_height;
    double m_leastMargin = 1;
    std::vector<Complex> m_roots;
    std::vector<Complex> m_product;
};

}  // namespace numeric::test
