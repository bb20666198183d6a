#include <cstring>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/scenes.h"
#include "bench/series.h"
#include "filters/distance/FxImageFilterDistance.h"

// The whole object separator as the plug-in runs it, the host's operations included, beside the
// pipeline that users of OpenCV are taught.

namespace {

using namespace benchmarks;
using scenes::Scene;
using Scenes = std::vector<Scene>;

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

void runNumeric(benchmark::State& state, const Scenes& scenes) {
    Separator separator;
    const ParameterValues values = details(10);
    std::unique_ptr<HkImage> image;
    measure(
        state, scenes, [&](const Scene& scene) { image.reset(imageOf(scene)); },
        [&](const Scene&) { image.reset(separator.process(image.release(), values)); });
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

void runOpenCV(benchmark::State& state, const Scenes& scenes) {
    OpenCVSeparator separator;
    measure(state, scenes, [&](const Scene& scene) {
        separator.process(cv::Mat(scene.height, scene.width, CV_8U,
                                  const_cast<unsigned char*>(scene.pixels.data())));
    });
}

void addSeries(const SharedSeries<Scene>& series) {
    const auto addOne = [&](const char* library, void (*run)(benchmark::State&, const Scenes&)) {
        add("separator", series->name, series->size, library,
            [=](benchmark::State& state) { run(state, series->inputs()); });
    };
    addOne("numeric", runNumeric);
    addOne("OpenCV", runOpenCV);
}

}  // namespace

void benchmarks::addSeparator() {
    for (const Size size : kSizes) {
        addSeries(differing<Scene>("dense discs", size, scenes::denseDiscs));
        addSeries(differing<Scene>("sparse discs", size, scenes::sparseDiscs));
    }
}
