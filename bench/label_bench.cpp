#include <benchmark/benchmark.h>

#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "bench/scenes.h"
#include "bench/seeds.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"

namespace {

using scenes::Scene;

// Labelling works in place; the labels of one round are the areas of the next.
void runNumeric(benchmark::State& state, const Scene& scene, int connectivity) {
    std::vector<unsigned char> marker = scene.pixels;
    int scratchSize = 0;
    numeric::labelSeedsScratchSize(scene.width, scene.height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    int count = 0;
    for (auto _ : state) {
        const auto status =
            numeric::labelSeeds(marker.data(), scene.width, scene.width, scene.height, 2, 254,
                                connectivity, &count, scratch.get());
        if (status != numeric::Success) state.SkipWithError("the labelling failed");
        benchmark::ClobberMemory();
    }
    state.counters["areas"] = count;
}

void runOpenCV(benchmark::State& state, const Scene& scene, int connectivity, int algorithm) {
    const cv::Mat source(scene.height, scene.width, CV_8U,
                         const_cast<unsigned char*>(scene.pixels.data()));
    cv::Mat labels;
    const int neighbours = connectivity == 0 ? 8 : 4;
    for (auto _ : state) {
        cv::connectedComponents(source, labels, neighbours, CV_16U, algorithm);
        benchmark::ClobberMemory();
    }
}

void add(Scene scene) {
    const auto shared = std::make_shared<const Scene>(std::move(scene));
    for (const int connectivity : {0, 1}) {
        const std::string name = "label" + std::string(connectivity == 0 ? "8" : "4") + "/" +
                                 shared->name + "/" + std::to_string(shared->width) + "x" +
                                 std::to_string(shared->height) + "/";
        const auto addOne = [&](const char* library, auto run) {
            benchmark::RegisterBenchmark((name + library).c_str(), [=](benchmark::State& state) {
                run(state, *shared, connectivity);
            })->Unit(benchmark::kMillisecond);
        };
        const auto addPeer = [&](const char* library, int algorithm) {
            addOne(library, [algorithm](benchmark::State& state, const Scene& s, int c) {
                runOpenCV(state, s, c, algorithm);
            });
        };
        addOne("numeric", runNumeric);
        addPeer("OpenCV SAUF", cv::CCL_WU);
        addPeer("OpenCV BBDT", cv::CCL_GRANA);
        addPeer("OpenCV Spaghetti", cv::CCL_BOLELLI);
    }
}

const bool kAdded = [] {
    constexpr int kSizes[][2] = {{1920, 1080}, {512, 512}, {3840, 2160}};
    for (const auto& [width, height] : kSizes) {
        const Scene discs = scenes::denseDiscs(width, height);
        add(scenes::seeds(discs));
        add(discs);
        add(scenes::sparseDiscs(width, height));
        add(scenes::noise(width, height));
    }
    add(scenes::spiral(1920, 1080));
    add(scenes::comb(1920, 1080));
    return true;
}();

}  // namespace
