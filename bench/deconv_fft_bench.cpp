#include <fftw3.h>

#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>

#include "bench/series.h"
#include "numeric/owned.h"

namespace {

using namespace benchmarks;

constexpr int kKernelSize = 3;
constexpr float kKernel[kKernelSize * kKernelSize] = {0.0625F, 0.125F,  0.0625F, 0.125F, 0.25F,
                                                      0.125F,  0.0625F, 0.125F,  0.0625F};
constexpr float kThreshold = 0.1F;

cv::Mat picture(cv::Size size) {
    cv::Mat noise(size, CV_32F);
    cv::RNG random(1);
    random.fill(noise, cv::RNG::UNIFORM, 0, 255);
    return noise;
}

int orderOf(cv::Size size) {
    int order = 10;
    while ((1 << order) < std::max(size.width, size.height) + kKernelSize - 1) ++order;
    return order;
}

/// processorCode: one that selects the build to measure.
void runNumeric(benchmark::State& state, cv::Size size, int processorCode) {
    const std::array sources{picture(size)};
    cv::Mat result(size, CV_32F);
    numeric::DeconvFFTState* deconvolution = nullptr;
    if (numeric::deconvFFTInit(&deconvolution, kKernel, kKernelSize, orderOf(size), kThreshold) !=
        numeric::Success)
        state.SkipWithError("no state");
    const numeric::OwnedDeconvFFT owned(deconvolution);
    numeric::selectVariant(processorCode);
    measure(state, sources, [&](const cv::Mat& source) {
        const auto status = numeric::deconvFFT(source.ptr<float>(), static_cast<int>(source.step),
                                               result.ptr<float>(), static_cast<int>(result.step),
                                               size.width, size.height, deconvolution);
        if (status != numeric::Success) state.SkipWithError("the deconvolution failed");
    });
    numeric::selectVariant(-1);
}

/// The filter of one frequency, as the kernels define it, times a scale.
void invert(float* re, float* im, float scale) {
    if (std::abs(*re) < kThreshold) *re = 0;
    if (std::abs(*im) < kThreshold) *im = 0;
    const float power = *re * *re + *im * *im;
    const bool usable = power > 0;
    *re = usable ? *re / power * scale : scale;
    *im = usable ? -*im / power * scale : 0;
}

struct FreeFftw {
    void operator()(float* block) const { fftwf_free(block); }
    void operator()(fftwf_plan plan) const { fftwf_destroy_plan(plan); }
};
using Plan = std::unique_ptr<std::remove_pointer_t<fftwf_plan>, FreeFftw>;

/// The best that FFTW offers for the task: transforms of real data, one dimension at a time so
/// that rows of zeros are left out, rows padded so that columns do not share their cache sets.
class FftwDeconvolution {
public:
    explicit FftwDeconvolution(cv::Size region)
        : m_region(region), m_length(1 << orderOf(region)), m_stride(m_length / 2 + 8) {
        const std::size_t floats = std::size_t{2} * m_stride * m_length;
        m_plane.reset(fftwf_alloc_real(floats));
        m_filter.reset(fftwf_alloc_real(floats));
        float* real = m_plane.get();
        auto* spectrum = reinterpret_cast<fftwf_complex*>(real);
        const int half = m_length / 2 + 1, rowsIn = region.height + kKernelSize - 1;
        m_rows.reset(fftwf_plan_many_dft_r2c(1, &m_length, rowsIn, real, nullptr, 1, 2 * m_stride,
                                             spectrum, nullptr, 1, m_stride, FFTW_MEASURE));
        m_columns.reset(fftwf_plan_many_dft(1, &m_length, half, spectrum, nullptr, m_stride, 1,
                                            spectrum, nullptr, m_stride, 1, FFTW_FORWARD,
                                            FFTW_MEASURE));
        m_columnsBack.reset(fftwf_plan_many_dft(1, &m_length, half, spectrum, nullptr, m_stride, 1,
                                                spectrum, nullptr, m_stride, 1, FFTW_BACKWARD,
                                                FFTW_MEASURE));
        m_rowsBack.reset(fftwf_plan_many_dft_c2r(1, &m_length, region.height, spectrum, nullptr, 1,
                                                 m_stride, real, nullptr, 1, 2 * m_stride,
                                                 FFTW_MEASURE));
        std::memset(real, 0, floats * sizeof(float));
        for (int i = 0; i < kKernelSize * kKernelSize; ++i)
            if (kKernel[i] > kThreshold) row(i / kKernelSize)[i % kKernelSize] = kKernel[i];
        fftwf_execute(m_rows.get());
        fftwf_execute(m_columns.get());
        std::memcpy(m_filter.get(), real, floats * sizeof(float));
        const float scale = 1.0F / (static_cast<float>(m_length) * static_cast<float>(m_length));
        for (std::size_t i = 0; i < floats; i += 2)
            invert(m_filter.get() + i, m_filter.get() + i + 1, scale);
    }

    void operator()(const cv::Mat& source, cv::Mat& result) {
        const int rowsIn = m_region.height + kKernelSize - 1;
        for (int y = 0; y < rowsIn; ++y) {
            const int nearest = std::clamp(y - 1, 0, m_region.height - 1);
            std::memset(row(y), 0, m_length * sizeof(float));
            std::memcpy(row(y) + 1, source.ptr<float>(nearest), m_region.width * sizeof(float));
        }
        std::memset(row(rowsIn), 0, (row(m_length) - row(rowsIn)) * sizeof(float));
        fftwf_execute(m_rows.get());
        fftwf_execute(m_columns.get());
        multiply();
        fftwf_execute(m_columnsBack.get());
        fftwf_execute(m_rowsBack.get());
        for (int y = 0; y < m_region.height; ++y) {
            const float* from = row(y);
            float* to = result.ptr<float>(y);
            for (int x = 0; x < m_region.width; ++x)
                to[x] = std::abs(from[x]) > kThreshold ? from[x] : 0.0F;
        }
    }

private:
    float* row(int y) { return m_plane.get() + std::size_t{2} * m_stride * y; }

    void multiply() {
        float* __restrict values = m_plane.get();
        const float* __restrict factors = m_filter.get();
        const std::size_t floats = std::size_t{2} * m_stride * m_length;
        for (std::size_t i = 0; i < floats; i += 2) {
            const float re = values[i] * factors[i] - values[i + 1] * factors[i + 1];
            const float im = values[i] * factors[i + 1] + values[i + 1] * factors[i];
            values[i] = re;
            values[i + 1] = im;
        }
    }

    cv::Size m_region;
    int m_length;
    int m_stride;  ///< complex values from row to row
    std::unique_ptr<float, FreeFftw> m_plane, m_filter;
    Plan m_rows, m_columns, m_columnsBack, m_rowsBack;
};

void runFftw(benchmark::State& state, cv::Size size) {
    const std::array sources{picture(size)};
    cv::Mat result(size, CV_32F);
    FftwDeconvolution deconvolve(size);
    measure(state, sources, [&](const cv::Mat& source) { deconvolve(source, result); });
}

void runOpenCV(benchmark::State& state, cv::Size size) {
    const int length = 1 << orderOf(size), rowsIn = size.height + kKernelSize - 1;
    const std::array sources{picture(size)};
    cv::Mat padded(length, length, CV_32F), spectrum, result(size, CV_32F);
    // The packed format's scale of the filter; its values do not change the time.
    const cv::Mat filter(length, length, CV_32F,
                         cv::Scalar(1.0 / (static_cast<double>(length) * length)));
    measure(state, sources, [&](const cv::Mat& source) {
        padded = 0;
        source.copyTo(padded(cv::Rect({1, 1}, size)));
        cv::dft(padded, spectrum, 0, rowsIn);
        cv::mulSpectrums(spectrum, filter, spectrum, 0);
        cv::dft(spectrum, padded, cv::DFT_INVERSE, size.height);
        cv::threshold(padded(cv::Rect({0, 0}, size)), result, kThreshold, 0, cv::THRESH_TOZERO);
    });
}

/// build: empty for the one that adapts to the processor.
void addBuild(cv::Size size, const std::string& build, int processorCode) {
    const auto addOne = [&](const char* library, auto run) {
        add("deconvFFT", "3x3" + build, {size.width, size.height}, library, run);
    };
    addOne("numeric", [=](benchmark::State& state) { runNumeric(state, size, processorCode); });
    addOne("FFTW", [=](benchmark::State& state) { runFftw(state, size); });
    addOne("OpenCV", [=](benchmark::State& state) { runOpenCV(state, size); });
}

}  // namespace

void benchmarks::addDeconvFft() {
    constexpr int kAdapting = -1, kPortable = 6, kSse4 = 33, kAvx2 = 35;
    addBuild({1920, 1080}, "", kAdapting);
    addBuild({1920, 1080}, ", AVX2", kAvx2);
    addBuild({1920, 1080}, ", SSE4", kSse4);
    addBuild({1920, 1080}, ", portable", kPortable);
    addBuild({640, 480}, "", kAdapting);
    addBuild({3840, 2160}, "", kAdapting);
}
