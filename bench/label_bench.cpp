#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/scenes.h"
#include "bench/seeds.h"
#include "bench/series.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"

namespace {

using namespace benchmarks;
using scenes::Scene;
using Scenes = std::vector<Scene>;

// Labelling works in place; the labels of one round are the areas of the next.
void runNumeric(benchmark::State& state, const Scenes& scenes, int connectivity) {
    std::vector<std::vector<unsigned char>> markers;
    for (const Scene& scene : scenes) markers.push_back(scene.pixels);
    const int width = scenes.front().width;
    const int height = scenes.front().height;
    int scratchSize = 0;
    numeric::labelSeedsScratchSize(width, height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    measure(state, markers, [&](std::vector<unsigned char>& marker) {
        int count = 0;
        const auto status = numeric::labelSeeds(marker.data(), width, width, height, 2, 254,
                                                connectivity, &count, scratch.get());
        if (status != numeric::Success) state.SkipWithError("the labelling failed");
    });
}

void runOpenCV(benchmark::State& state, const Scenes& scenes, int connectivity, int algorithm) {
    cv::Mat labels;
    const int neighbours = connectivity == 0 ? 8 : 4;
    measure(state, scenes, [&](const Scene& scene) {
        const cv::Mat source(scene.height, scene.width, CV_8U,
                             const_cast<unsigned char*>(scene.pixels.data()));
        cv::connectedComponents(source, labels, neighbours, CV_16U, algorithm);
    });
}

void addSeries(const SharedSeries<Scene>& series) {
    for (const int connectivity : {0, 1}) {
        const auto addOne = [&](const char* library, auto run) {
            add(connectivity == 0 ? "label8" : "label4", series->name, series->size, library,
                [=](benchmark::State& state) { run(state, series->inputs(), connectivity); });
        };
        const auto addPeer = [&](const char* library, int algorithm) {
            addOne(library, [algorithm](benchmark::State& state, const Scenes& s, int c) {
                runOpenCV(state, s, c, algorithm);
            });
        };
        addOne("numeric", runNumeric);
        addPeer("OpenCV SAUF", cv::CCL_WU);
        addPeer("OpenCV BBDT", cv::CCL_GRANA);
        addPeer("OpenCV Spaghetti", cv::CCL_BOLELLI);
    }
}

}  // namespace

void benchmarks::addLabel() {
    for (const Size size : kSizes) {
        addSeries(differing<Scene>(
            "seeds of dense discs", size, [](int width, int height, unsigned seed) {
                return scenes::seeds(scenes::denseDiscs(width, height, seed));
            }));
        addSeries(differing<Scene>("dense discs", size, scenes::denseDiscs));
        addSeries(differing<Scene>("sparse discs", size, scenes::sparseDiscs));
        addSeries(differing<Scene>("noise", size, [](int width, int height, unsigned seed) {
            return scenes::noise(width, height, seed);
        }));
    }
    addSeries(single<Scene>("spiral", kFullHd, scenes::spiral));
    addSeries(single<Scene>("comb", kFullHd, scenes::comb));
}
