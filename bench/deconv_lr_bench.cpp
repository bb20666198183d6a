#include <array>
#include <opencv2/imgproc.hpp>
#include <string>

#include "bench/series.h"
#include "numeric/owned.h"

namespace {

using namespace benchmarks;

constexpr int kKernelSize = 5;
constexpr float kThreshold = 1e-4F;

cv::Mat kernel() {
    const cv::Mat weights = (cv::Mat_<float>(kKernelSize, kKernelSize) << 2, 7, 12, 7, 2, 7, 31, 52,
                             31, 7, 12, 52, 127, 52, 12, 7, 31, 52, 31, 7, 2, 7, 12, 7, 2);
    return weights / 571;
}

/// Blurred noise from 1 to 255: smooth, without the zeros that make NaN of an unguarded division.
cv::Mat picture(cv::Size size) {
    cv::Mat noise(size, CV_32F);
    cv::RNG random(1);
    random.fill(noise, cv::RNG::UNIFORM, 0, 255);
    cv::GaussianBlur(noise, noise, {}, 1.5);
    cv::normalize(noise, noise, 1, 255, cv::NORM_MINMAX);
    return noise;
}

/// processorCode: one that selects the build to measure.
void runNumeric(benchmark::State& state, cv::Size size, int iterations, int processorCode) {
    const cv::Mat weights = kernel();
    const std::array sources{picture(size)};
    cv::Mat result(size, CV_32F);
    numeric::DeconvLRState* deconvolution = nullptr;
    if (numeric::deconvLRInit(&deconvolution, weights.ptr<float>(), kKernelSize,
                              size.width + kKernelSize, size.height + kKernelSize,
                              kThreshold) != numeric::Success)
        state.SkipWithError("no state");
    const numeric::OwnedDeconvLR owned(deconvolution);
    numeric::selectVariant(processorCode);
    measure(state, sources, [&](const cv::Mat& source) {
        const auto status = numeric::deconvLR(source.ptr<float>(), static_cast<int>(source.step),
                                              result.ptr<float>(), static_cast<int>(result.step),
                                              size.width, size.height, iterations, deconvolution);
        if (status != numeric::Success) state.SkipWithError("the deconvolution failed");
    });
    numeric::selectVariant(-1);
}

enum class Guards { None, RatioAndResult };

void runOpenCV(benchmark::State& state, cv::Size size, int iterations, Guards guards) {
    const bool guarded = guards == Guards::RatioAndResult;
    const cv::Mat weights = kernel();
    const std::array sources{picture(size)};
    cv::Mat estimate(size, CV_32F), ratio(size, CV_32F), correction(size, CV_32F), small;
    const auto blur = [&weights](const cv::Mat& from, cv::Mat& to) {
        cv::filter2D(from, to, CV_32F, weights, {-1, -1}, 0, cv::BORDER_CONSTANT);
    };
    measure(state, sources, [&](const cv::Mat& source) {
        source.copyTo(estimate);
        for (int i = 0; i < iterations; ++i) {
            blur(estimate, ratio);
            if (guarded) cv::compare(ratio, kThreshold, small, cv::CMP_LE);
            cv::divide(source, ratio, ratio);
            if (guarded) ratio.setTo(0, small);
            blur(ratio, correction);
            cv::multiply(estimate, correction, estimate);
        }
        if (guarded) cv::threshold(estimate, estimate, kThreshold, 0, cv::THRESH_TOZERO);
    });
}

/// build: empty for the one that adapts to the processor.
void addBuild(cv::Size size, int iterations, const std::string& build, int processorCode) {
    const auto addOne = [&](const char* library, auto run) {
        add("deconvLR", std::to_string(iterations) + " iterations" + build,
            {size.width, size.height}, library, run);
    };
    addOne("numeric",
           [=](benchmark::State& state) { runNumeric(state, size, iterations, processorCode); });
    addOne("OpenCV",
           [=](benchmark::State& state) { runOpenCV(state, size, iterations, Guards::None); });
    addOne("OpenCV guarded", [=](benchmark::State& state) {
        runOpenCV(state, size, iterations, Guards::RatioAndResult);
    });
}

}  // namespace

void benchmarks::addDeconvLr() {
    constexpr int kAdapting = -1, kSse4 = 33, kAvx2 = 35;
    for (const int iterations : {4, 30}) {
        addBuild({1920, 1080}, iterations, "", kAdapting);
        addBuild({1920, 1080}, iterations, ", AVX2", kAvx2);
        addBuild({1920, 1080}, iterations, ", SSE4", kSse4);
    }
    addBuild({640, 480}, 4, "", kAdapting);
    addBuild({3840, 2160}, 4, "", kAdapting);
}
