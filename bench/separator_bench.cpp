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

// Both sides render one frame before the clock runs: what they keep from frame to frame is in
// place.

void runNumeric(benchmark::State& state, const Scene& scene) {
    Separator separator;
    const ParameterValues values = details(10);
    delete separator.process(imageOf(scene), values);
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

/// The pipeline that users of OpenCV are taught, without a pass that could be saved.
class OpenCVSeparator {
public:
    /// Distance, threshold at a share of the maximum, label, watershed.
    void process(const cv::Mat& source) {
        cv::distanceTransform(source, m_distances, cv::DIST_L2, cv::DIST_MASK_5);
        double farthest = 0;
        cv::minMaxLoc(m_distances, nullptr, &farthest);
        cv::compare(m_distances, 0.7 * farthest, m_sure, cv::CMP_GT);
        const int background = cv::connectedComponents(m_sure, m_labels, 8, CV_32S);
        // The background is one more seed; between it and the seeds, 1 and up, is unknown ground.
        cv::compare(source, 0, m_background, cv::CMP_EQ);
        m_labels.setTo(background, m_background);
        cv::cvtColor(source, m_picture, cv::COLOR_GRAY2BGR);
        cv::watershed(m_picture, m_labels);
        cv::inRange(m_labels, 1, background - 1, m_result);
    }

private:
    cv::Mat m_distances, m_sure, m_labels, m_background, m_picture, m_result;
};

void runOpenCV(benchmark::State& state, const Scene& scene) {
    const cv::Mat source(scene.height, scene.width, CV_8U,
                         const_cast<unsigned char*>(scene.pixels.data()));
    OpenCVSeparator separator;
    separator.process(source);
    for (auto _ : state) {
        separator.process(source);
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
