#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "bench/scenes.h"
#include "bench/seeds.h"
#include "bench/series.h"
#include "numeric/base/neighbours.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"
#include "numeric/watershed/flood.h"

namespace {

using namespace benchmarks;
using scenes::Scene;

/// What a watershed is given: its relief, and the marker with labelled seeds.
struct Case {
    int width;
    int height;
    std::vector<unsigned char> relief;
    std::vector<unsigned char> marker;
};
using Cases = std::vector<Case>;

constexpr int kBySteps = 1;
constexpr int kByDistance = 2;

std::vector<unsigned char> labelled(Scene seeds) {
    int scratchSize = 0;
    int count = 0;
    numeric::labelSeedsScratchSize(seeds.width, seeds.height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    numeric::labelSeeds(seeds.pixels.data(), seeds.width, seeds.width, seeds.height, 2, 254, 1,
                        &count, scratch.get());
    return seeds.pixels;
}

/// Objects at level 0, the background at level 255 one seed of label 1.
Case withoutSeeds(const Scene& scene) {
    Case result{scene.width, scene.height, scene.pixels, scene.pixels};
    for (std::size_t i = 0; i < scene.pixels.size(); ++i) {
        result.relief[i] = static_cast<unsigned char>(255 - scene.pixels[i]);
        result.marker[i] = scene.pixels[i] == 0 ? 1 : 0;
    }
    return result;
}

/// The object separator's case: a seed for each object.
Case twoLevels(const Scene& scene) {
    Case result = withoutSeeds(scene);
    const std::vector<unsigned char> seeds = labelled(scenes::seeds(scene));
    for (std::size_t i = 0; i < seeds.size(); ++i)
        if (seeds[i] != 0) result.marker[i] = seeds[i];
    return result;
}

/// Corridors with a seed at the first and the last pixel.
Case floodedFromEnds(const Scene& scene) {
    Case result = withoutSeeds(scene);
    *std::find(result.marker.begin(), result.marker.end(), 0) = 2;
    *std::find(result.marker.rbegin(), result.marker.rend(), 0) = 3;
    return result;
}

/// 256 levels: the slope of blurred discs, as a gradient image has it, with a little noise. The
/// seeds are those of the discs and of the gaps between them.
Case manyLevels(const Scene& scene, unsigned seed) {
    Case result{scene.width, scene.height, scene.pixels, {}};
    cv::Mat relief(scene.height, scene.width, CV_8U, result.relief.data());
    cv::RNG random(seed);
    cv::Mat grains(relief.size(), CV_8U);
    random.fill(grains, cv::RNG::UNIFORM, 0, 256);
    cv::Mat grey;
    cv::addWeighted(relief, 0.85, grains, 0.15, 0, grey);
    cv::GaussianBlur(grey, grey, {15, 15}, 0);
    cv::morphologyEx(grey, relief, cv::MORPH_GRADIENT, cv::Mat::ones(3, 3, CV_8U));
    cv::normalize(relief, relief, 0, 255, cv::NORM_MINMAX);
    result.marker = labelled(scenes::seeds(scene));
    return result;
}

void runNumeric(benchmark::State& state, const Cases& cases, int norm, int flags) {
    const int width = cases.front().width;
    const int height = cases.front().height;
    std::vector<unsigned char> marker;
    int scratchSize = 0;
    numeric::watershedScratchSize(width, height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    measure(
        state, cases, [&](const Case& c) { marker = c.marker; },
        [&](const Case& c) {
            const auto status = numeric::watershed(c.relief.data(), width, marker.data(), width,
                                                   width, height, norm, flags, scratch.get());
            if (status != numeric::Success) state.SkipWithError("the watershed failed");
        });
}

/// The flood by a queue alone, which tiles are to be faster than.
void runQueue(benchmark::State& state, const Cases& cases, int norm, int flags) {
    const int width = cases.front().width;
    const int height = cases.front().height;
    std::vector<unsigned char> marker;
    int scratchSize = 0;
    numeric::watershedScratchSize(width, height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    const auto& rows = numeric::kWatershedSlots.selected();
    measure(
        state, cases, [&](const Case& c) { marker = c.marker; },
        [&](const Case& c) {
            const numeric::FloodPlanes planes{{c.relief.data(), width, width, height},
                                              {marker.data(), width, width, height}};
            if (flags == kByDistance)
                numeric::floodByMarching(planes, rows, numeric::kFrontSlots.selected(),
                                         scratch.get());
            else
                numeric::floodBySteps(planes, rows, numeric::neighboursOf(norm), scratch.get());
        });
}

void runOpenCV(benchmark::State& state, const Cases& cases) {
    cv::Mat picture, marker;
    measure(
        state, cases,
        [&](const Case& c) {
            const auto mat = [&c](const std::vector<unsigned char>& plane) {
                return cv::Mat(c.height, c.width, CV_8U, const_cast<unsigned char*>(plane.data()));
            };
            cv::cvtColor(mat(c.relief), picture, cv::COLOR_GRAY2BGR);
            mat(c.marker).convertTo(marker, CV_32S);
        },
        [&](const Case&) { cv::watershed(picture, marker); });
}

void addSeries(const SharedSeries<Case>& series) {
    constexpr int kSettings[][2] = {{3, 130}, {0, 129}, {1, 65}};
    for (const auto& [norm, flags] : kSettings) {
        const std::string kernel = "watershed" + std::to_string(norm);
        add(kernel, series->name, series->size, "numeric",
            [=, n = norm, f = flags](benchmark::State& state) {
                runNumeric(state, series->inputs(), n, f);
            });
        add(kernel, series->name, series->size, "OpenCV",
            [=](benchmark::State& state) { runOpenCV(state, series->inputs()); });
    }
}

/// Corridors with one pixel in seedEvery for a seed.
Case withSeeds(const Scene& scene, unsigned seedEvery) {
    Case result = withoutSeeds(scene);
    cv::RNG random(1);
    for (unsigned char& label : result.marker)
        if (label == 0 && random.next() % seedEvery == 0)
            label = static_cast<unsigned char>(2 + random.next() % 250);
    return result;
}

/// Scenes that suit tiles badly, beside the queue alone, without borders.
void addBesideQueue(const std::string& name, const std::function<Case(int, int)>& make) {
    const auto series = single<Case>(name, kFullHd, make);
    constexpr int kOrders[][2] = {{3, kByDistance}, {0, kBySteps}, {1, kBySteps}};
    for (const auto& [norm, flags] : kOrders) {
        const std::string kernel = "watershed" + std::to_string(norm);
        add(kernel, name, kFullHd, "numeric", [=, n = norm, f = flags](benchmark::State& state) {
            runNumeric(state, series->inputs(), n, f);
        });
        add(kernel, name, kFullHd, "our queue", [=, n = norm, f = flags](benchmark::State& state) {
            runQueue(state, series->inputs(), n, f);
        });
    }
}

}  // namespace

void benchmarks::addWatershed() {
    for (const Size size : kSizes) {
        addSeries(differing<Case>("dense discs", size, [](int width, int height, unsigned seed) {
            return twoLevels(scenes::denseDiscs(width, height, seed));
        }));
        addSeries(differing<Case>("sparse discs", size, [](int width, int height, unsigned seed) {
            return twoLevels(scenes::sparseDiscs(width, height, seed));
        }));
        addSeries(differing<Case>("256 levels", size, [](int width, int height, unsigned seed) {
            return manyLevels(scenes::denseDiscs(width, height, seed), seed);
        }));
    }
    const auto addFromEnds = [](const char* name, Scene (*make)(int width, int height)) {
        const auto flooded = [=](int width, int height) {
            return floodedFromEnds(make(width, height));
        };
        addSeries(single<Case>(name, kFullHd, flooded));
        addBesideQueue(std::string(name) + " without borders", flooded);
    };
    addFromEnds("spiral", scenes::spiral);
    addFromEnds("serpentine", scenes::serpentine);
    addFromEnds("comb", scenes::comb);
    const auto addSeeded = [](const std::string& name, Scene (*make)(int, int, int), int corridor,
                              unsigned seedEvery) {
        addBesideQueue(name + ", " + std::to_string(corridor) + " wide",
                       [=](int width, int height) {
                           return withSeeds(make(width, height, corridor), seedEvery);
                       });
    };
    for (const int percent : {60, 80, 95})
        addBesideQueue("noise, " + std::to_string(percent) + " percent objects",
                       [=](int width, int height) {
                           return withSeeds(scenes::noise(width, height, 1, percent / 100.0), 300);
                       });
    for (const int width : {1, 2, 4}) {
        addSeeded("teeth", scenes::teeth, width, 300);
        addSeeded("diagonal teeth", scenes::diagonalTeeth, width, 300);
    }
    for (const int width : {3, 8, 20}) {
        addSeeded("maze", scenes::maze, width, 3000);
        addBesideQueue("maze from its ends, " + std::to_string(width) + " wide",
                       [=](int sceneWidth, int height) {
                           return floodedFromEnds(scenes::maze(sceneWidth, height, width));
                       });
    }
}
