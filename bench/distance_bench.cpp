#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "bench/scenes.h"
#include "bench/series.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"

namespace {

using namespace benchmarks;
using scenes::Scene;
using Scenes = std::vector<Scene>;

void runNumeric(benchmark::State& state, const Scenes& scenes) {
    const int width = scenes.front().width;
    const int height = scenes.front().height;
    int step = 0;
    const auto distances = numeric::makeZeroPlane(width, height, &step);
    int scratchSize = 0;
    numeric::distanceTransformScratchSize(width, height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    measure(state, scenes, [&](const Scene& scene) {
        const auto status = numeric::distanceTransform(scene.pixels.data(), width, distances.get(),
                                                       step, width, height, scratch.get());
        if (status != numeric::Success) state.SkipWithError("the transform failed");
        benchmark::DoNotOptimize(distances.get());
    });
}

void runOpenCV(benchmark::State& state, const Scenes& scenes) {
    cv::Mat distances;
    measure(state, scenes, [&](const Scene& scene) {
        const cv::Mat source(scene.height, scene.width, CV_8U,
                             const_cast<unsigned char*>(scene.pixels.data()));
        cv::distanceTransform(source, distances, cv::DIST_L2, cv::DIST_MASK_PRECISE);
    });
}

void addSeries(const SharedSeries<Scene>& series) {
    const auto addOne = [&](const char* library, void (*run)(benchmark::State&, const Scenes&)) {
        add("distance", series->name, series->size, library,
            [=](benchmark::State& state) { run(state, series->inputs()); });
    };
    addOne("numeric", runNumeric);
    addOne("OpenCV", runOpenCV);
}

}  // namespace

void benchmarks::addDistance() {
    for (const Size size : kSizes) {
        addSeries(differing<Scene>("dense discs", size, scenes::denseDiscs));
        addSeries(differing<Scene>("sparse discs", size, scenes::sparseDiscs));
        addSeries(differing<Scene>("noise", size, [](int width, int height, unsigned seed) {
            return scenes::noise(width, height, seed);
        }));
        addSeries(single<Scene>("zero border", size, scenes::zeroBorder));
    }
    addSeries(single<Scene>("spiral", kFullHd, scenes::spiral));
    addSeries(single<Scene>("serpentine", kFullHd, scenes::serpentine));
    addSeries(single<Scene>("comb", kFullHd, scenes::comb));
    addSeries(single<Scene>("one zero pixel", kFullHd, scenes::oneZeroPixel));
    for (const int spacing : {40, 260, 1900})
        addSeries(single<Scene>(
            "diagonal lines " + std::to_string(spacing), kFullHd,
            [=](int width, int height) { return scenes::diagonalLines(width, height, spacing); }));
}
