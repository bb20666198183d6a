#include <cmath>

#include "numeric/deconvolution/deconv_fft.h"

namespace numeric {
namespace {

struct ComplexDouble {
    double re = 0;
    double im = 0;
};

/// exp(-2 pi i n / length) for n from 0 to length - 1. The first eighth is computed, the rest
/// follows by symmetry, so that the zeros of a kernel's spectrum come out as zeros.
void fillRoots(int length, ComplexDouble* roots) {
    const double step = 2.0 * 3.14159265358979323846 / length;
    const int eighth = length / 8;
    const int quarter = length / 4;
    for (int n = 0; n <= eighth; ++n) {
        const double c = std::cos(step * n);
        const double s = std::sin(step * n);
        roots[n] = {c, -s};
        roots[quarter - n] = {s, -c};
    }
    for (int n = 0; n < quarter; ++n) roots[n + quarter] = {roots[n].im, -roots[n].re};
    for (int n = 0; n < length / 2; ++n) roots[n + length / 2] = {-roots[n].re, -roots[n].im};
}

int columnFrequency(const FftPlan& plan, int column) {
    const int quarter = plan.length / 4;
    const int special[] = {0, quarter, plan.length / 8, plan.length / 8 + quarter};
    const int quad = column / 4;
    if (quad == plan.quadCount()) return plan.length / 2;
    return quad == 0 ? special[column] : plan.quads[quad].frequency + column % 4 * quarter;
}

/// Small weights are dropped from the point-spread function on purpose.
double placedWeight(float weight, float threshold) {
    return std::abs(weight) > threshold ? weight : 0.0;
}

/// The filter for a value of the kernel's spectrum: 1 / H of what the threshold leaves of H, or 1
/// where that is nothing.
ComplexDouble invert(ComplexDouble response, float threshold) {
    float re = static_cast<float>(response.re);
    float im = static_cast<float>(response.im);
    if (std::abs(re) < threshold) re = 0;
    if (std::abs(im) < threshold) im = 0;
    if (!(std::abs(re) > threshold) && !(std::abs(im) > threshold)) return {1, 0};
    const double power = static_cast<double>(re) * re + static_cast<double>(im) * im;
    return {re / power, -im / power};
}

}  // namespace

void makeInverseFilter(DeconvFFTState& state) {
    const FftPlan& plan = *state.transformSpec;
    const HalfSpectrum layout{plan.length};
    const int length = plan.length;
    const int k = state.kernelSize;
    constexpr int kColumns = HalfSpectrum::kBlockColumns;

    // Of a transform that runs at a larger length, only every repeat-th frequency occurs.
    const int repeat = length / state.transformSize;
    // The two transforms together give length^2 times the input, and the separation of row pairs
    // twice of that.
    const double scale = 1.0 / (2.0 * length * length);

    auto* roots = reinterpret_cast<ComplexDouble*>(onCacheLine(state.paddedArray));
    auto* rowResponses = reinterpret_cast<ComplexDouble*>(onCacheLine(state.spectrumArray));
    float* filter = onCacheLine(state.inverseFilter);
    fillRoots(length, roots);
    const auto root = [&](int a, int b) {
        return roots[static_cast<std::int64_t>(a) * b & (length - 1)];
    };

    for (int block = 0; block < layout.blockCount(); ++block) {
        int frequencies[kColumns] = {};
        for (int c = 0; c < layout.columnsOfBlock(block); ++c)
            frequencies[c] = columnFrequency(plan, block * kColumns + c);
        // The spectrum of each kernel row at the block's columns ...
        for (int i = 0; i < k; ++i) {
            for (int c = 0; c < kColumns; ++c) {
                ComplexDouble sum;
                for (int j = 0; j < k; ++j) {
                    const double weight = placedWeight(state.kernel[i * k + j], state.threshold);
                    sum.re += weight * root(j, frequencies[c]).re;
                    sum.im += weight * root(j, frequencies[c]).im;
                }
                rowResponses[i * kColumns + c] = sum;
            }
        }
        // ... then of its columns, in the order in which the transform leaves them.
        for (int element = 0; element < length; ++element, filter += HalfSpectrum::kRowFloats) {
            const int frequency = plan.groupFrequency[element / 4] + element % 4 * (length / 4);
            ComplexDouble sums[kColumns];
            for (int i = 0; i < k; ++i) {
                const ComplexDouble factor = root(i, frequency);
                const ComplexDouble* responses = rowResponses + i * kColumns;
                for (int c = 0; c < kColumns; ++c) {
                    sums[c].re += responses[c].re * factor.re - responses[c].im * factor.im;
                    sums[c].im += responses[c].re * factor.im + responses[c].im * factor.re;
                }
            }
            for (int c = 0; c < kColumns; ++c) {
                const bool occurs = frequency % repeat == 0 && frequencies[c] % repeat == 0;
                const ComplexDouble inverse =
                    occurs ? invert(sums[c], state.threshold) : ComplexDouble{};
                filter[c] = static_cast<float>(inverse.re * scale);
                filter[c + kColumns] = static_cast<float>(inverse.im * scale);
            }
        }
    }
}

}  // namespace numeric
