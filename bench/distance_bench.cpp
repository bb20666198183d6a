#include <benchmark/benchmark.h>

#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>

#include "bench/benchmarks.h"
#include "bench/scenes.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"

namespace {

using scenes::Scene;

void runNumeric(benchmark::State& state, const Scene& scene) {
    int step = 0;
    const auto distances = numeric::makeZeroPlane(scene.width, scene.height, &step);
    int scratchSize = 0;
    numeric::distanceTransformScratchSize(scene.width, scene.height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    for (auto _ : state) {
        const auto status =
            numeric::distanceTransform(scene.pixels.data(), scene.width, distances.get(), step,
                                       scene.width, scene.height, scratch.get());
        if (status != numeric::Success) state.SkipWithError("the transform failed");
        benchmark::DoNotOptimize(distances.get());
        benchmark::ClobberMemory();
    }
}

void runOpenCV(benchmark::State& state, const Scene& scene) {
    const cv::Mat source(scene.height, scene.width, CV_8U,
                         const_cast<unsigned char*>(scene.pixels.data()));
    cv::Mat distances(scene.height, scene.width, CV_32F);
    for (auto _ : state) {
        cv::distanceTransform(source, distances, cv::DIST_L2, cv::DIST_MASK_PRECISE);
        benchmark::ClobberMemory();
    }
}

void add(Scene scene) {
    const auto shared = std::make_shared<const Scene>(std::move(scene));
    const std::string name = "distance/" + shared->name + "/" + std::to_string(shared->width) +
                             "x" + std::to_string(shared->height) + "/";
    const auto addOne = [&](const char* library, void (*run)(benchmark::State&, const Scene&)) {
        benchmark::RegisterBenchmark((name + library).c_str(), [=](benchmark::State& state) {
            run(state, *shared);
        })->Unit(benchmark::kMillisecond);
    };
    addOne("numeric", runNumeric);
    addOne("OpenCV", runOpenCV);
}

}  // namespace

void benchmarks::addDistance() {
    constexpr int kSizes[][2] = {{1920, 1080}, {512, 512}, {3840, 2160}};
    for (const auto& [width, height] : kSizes) {
        add(scenes::denseDiscs(width, height));
        add(scenes::sparseDiscs(width, height));
        add(scenes::noise(width, height));
        add(scenes::zeroBorder(width, height));
    }
    constexpr int kWidth = 1920, kHeight = 1080;
    add(scenes::spiral(kWidth, kHeight));
    add(scenes::serpentine(kWidth, kHeight));
    add(scenes::comb(kWidth, kHeight));
    add(scenes::oneZeroPixel(kWidth, kHeight));
    for (const int spacing : {40, 260, 1900}) add(scenes::diagonalLines(kWidth, kHeight, spacing));
}
