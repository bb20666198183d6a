#include <benchmark/benchmark.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <string>
#include <vector>

#include "bench/scenes.h"
#include "bench/seeds.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"

namespace {

using scenes::Scene;

/// What a watershed is given: its relief, and the marker with labelled seeds.
struct Case {
    int width;
    int height;
    std::vector<unsigned char> relief;
    std::vector<unsigned char> marker;
};

std::vector<unsigned char> labelled(Scene seeds) {
    int scratchSize = 0;
    int count = 0;
    numeric::labelSeedsScratchSize(seeds.width, seeds.height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    numeric::labelSeeds(seeds.pixels.data(), seeds.width, seeds.width, seeds.height, 2, 254, 1,
                        &count, scratch.get());
    return seeds.pixels;
}

/// The object separator's case: objects at level 0 with a seed each, the background at level 255
/// one seed of label 1. Corridors have no seeds of their own; theirs are the first and last pixel.
Case twoLevels(const Scene& scene) {
    Case result{scene.width, scene.height, scene.pixels, {}};
    for (unsigned char& pixel : result.relief) pixel = static_cast<unsigned char>(255 - pixel);
    const Scene seeds = scenes::seeds(scene);
    result.marker = labelled(seeds);
    if (std::count(seeds.pixels.begin(), seeds.pixels.end(), 0) ==
        static_cast<std::ptrdiff_t>(seeds.pixels.size())) {
        const auto isObject = [](unsigned char level) { return level == 0; };
        const auto first = std::find_if(result.relief.begin(), result.relief.end(), isObject);
        const auto last = std::find_if(result.relief.rbegin(), result.relief.rend(), isObject);
        result.marker[first - result.relief.begin()] = 2;
        result.marker[result.relief.rend() - last - 1] = 3;
    }
    for (std::size_t i = 0; i < result.marker.size(); ++i)
        if (result.relief[i] == 255) result.marker[i] = 1;
    return result;
}

/// 256 levels: the slope of blurred discs, as a gradient image has it, with a little noise. The
/// seeds are those of the discs and of the gaps between them.
Case manyLevels(const Scene& scene) {
    Case result{scene.width, scene.height, scene.pixels, {}};
    cv::Mat relief(scene.height, scene.width, CV_8U, result.relief.data());
    cv::RNG random(5);
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

void runNumeric(benchmark::State& state, const Case& c, int norm, int flags) {
    std::vector<unsigned char> marker(c.marker.size());
    int scratchSize = 0;
    numeric::watershedScratchSize(c.width, c.height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    for (auto _ : state) {
        std::copy(c.marker.begin(), c.marker.end(), marker.begin());
        const auto status = numeric::watershed(c.relief.data(), c.width, marker.data(), c.width,
                                               c.width, c.height, norm, flags, scratch.get());
        if (status != numeric::Success) state.SkipWithError("the watershed failed");
        benchmark::ClobberMemory();
    }
}

void runOpenCV(benchmark::State& state, const Case& c) {
    const cv::Mat relief(c.height, c.width, CV_8U, const_cast<unsigned char*>(c.relief.data()));
    const cv::Mat seeds(c.height, c.width, CV_8U, const_cast<unsigned char*>(c.marker.data()));
    cv::Mat picture, marker;
    cv::cvtColor(relief, picture, cv::COLOR_GRAY2BGR);
    for (auto _ : state) {
        seeds.convertTo(marker, CV_32S);
        cv::watershed(picture, marker);
        benchmark::ClobberMemory();
    }
}

/// Makes its case when it is first measured: the kernels do not work yet while benchmarks register.
class LazyCase {
public:
    explicit LazyCase(std::function<Case()> make) : m_make(std::move(make)) {}
    const Case& get() {
        if (!m_case) m_case = m_make();
        return *m_case;
    }

private:
    std::function<Case()> m_make;
    std::optional<Case> m_case;
};

void add(const std::string& scene, int width, int height, std::function<Case()> make) {
    const auto lazy = std::make_shared<LazyCase>(std::move(make));
    constexpr int kSettings[][2] = {{3, 130}, {0, 129}, {1, 65}};
    for (const auto& [norm, flags] : kSettings) {
        const std::string name = "watershed" + std::to_string(norm) + "/" + scene + "/" +
                                 std::to_string(width) + "x" + std::to_string(height) + "/";
        const auto addOne = [&](const char* library, auto run) {
            benchmark::RegisterBenchmark((name + library).c_str(), [=](benchmark::State& state) {
                run(state, lazy->get());
            })->Unit(benchmark::kMillisecond);
        };
        addOne("numeric", [n = norm, f = flags](benchmark::State& state, const Case& c) {
            runNumeric(state, c, n, f);
        });
        addOne("OpenCV", runOpenCV);
    }
}

using MakeScene = Scene (*)(int width, int height);

void addTwoLevels(const std::string& name, int width, int height, MakeScene make) {
    add(name, width, height, [=] { return twoLevels(make(width, height)); });
}

const bool kAdded = [] {
    constexpr int kSizes[][2] = {{1920, 1080}, {512, 512}, {3840, 2160}};
    for (const auto& [width, height] : kSizes) {
        addTwoLevels("dense discs", width, height, scenes::denseDiscs);
        addTwoLevels("sparse discs", width, height, scenes::sparseDiscs);
        add("256 levels", width, height,
            [w = width, h = height] { return manyLevels(scenes::denseDiscs(w, h)); });
    }
    addTwoLevels("spiral", 1920, 1080, scenes::spiral);
    addTwoLevels("serpentine", 1920, 1080, scenes::serpentine);
    addTwoLevels("comb", 1920, 1080, scenes::comb);
    return true;
}();

}  // namespace
