#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "bench/scenes.h"
#include "filters/distance/FxImageFilterDistance.h"

// The whole object separator as the plug-in runs it, the host's operations included, beside the
// pipeline that users of OpenCV are taught.

namespace {

using scenes::Scene;

struct Separator : FxImageFilterDistance {
    Separator() : FxImageFilterDistance(1) {}
    using FxImageFilterDistance::process;
};

ParameterValues details(int value) {
    HkParamKeyframeVector values;
    for (int entry : {1, 0, value}) values.append(HkParamKeyframe(entry));
    return ParameterValues(values);
}

HkImage* imageOf(const Scene& scene) {
    auto* image = new HkImage(scene.width, scene.height, 1, nullptr, 4);
    for (int y = 0; y < scene.height; ++y)
        std::memcpy(image->data + std::size_t(y) * image->step,
                    &scene.pixels[std::size_t(y) * scene.width], scene.width);
    return image;
}

void runNumeric(benchmark::State& state, const Scene& scene) {
    Separator separator;
    const ParameterValues values = details(10);
    for (auto _ : state) {
        state.PauseTiming();
        HkImage* image = imageOf(scene);
        state.ResumeTiming();
        image = separator.process(image, values);
        state.PauseTiming();
        delete image;
        state.ResumeTiming();
    }
}

/// Distance, threshold at a share of the maximum, label, watershed.
void runOpenCV(benchmark::State& state, const Scene& scene) {
    const cv::Mat source(scene.height, scene.width, CV_8U,
                         const_cast<unsigned char*>(scene.pixels.data()));
    cv::Mat distances, peaks, labels, sure, picture, result;
    for (auto _ : state) {
        cv::distanceTransform(source, distances, cv::DIST_L2, cv::DIST_MASK_5);
        double farthest = 0;
        cv::minMaxLoc(distances, nullptr, &farthest);
        cv::threshold(distances, peaks, 0.7 * farthest, 255, cv::THRESH_BINARY);
        peaks.convertTo(sure, CV_8U);
        cv::connectedComponents(sure, labels, 8, CV_32S);
        labels += 1;  // the background is one more seed; between it and the seeds is unknown ground
        labels.setTo(0, source - sure);
        cv::cvtColor(source, picture, cv::COLOR_GRAY2BGR);
        cv::watershed(picture, labels);
        result = labels > 1;
        benchmark::ClobberMemory();
    }
}

const bool kAdded = [] {
    for (auto [width, height] : {std::pair{1920, 1080}, {512, 512}, {3840, 2160}}) {
        for (Scene scene :
             {scenes::denseDiscs(width, height), scenes::sparseDiscs(width, height)}) {
            const auto shared = std::make_shared<const Scene>(std::move(scene));
            const std::string name = "separator/" + shared->name + "/" + std::to_string(width) +
                                     "x" + std::to_string(height) + "/";
            const auto add = [&](const char* library,
                                 void (*run)(benchmark::State&, const Scene&)) {
                benchmark::RegisterBenchmark((name + library).c_str(),
                                             [=](benchmark::State& state) { run(state, *shared); })
                    ->Unit(benchmark::kMillisecond);
            };
            add("numeric", runNumeric);
            add("OpenCV", runOpenCV);
        }
    }
    return true;
}();

}  // namespace
