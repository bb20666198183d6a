#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "bench/scenes.h"
#include "bench/seeds.h"
#include "numeric/numeric.h"

namespace {

using scenes::Scene;

constexpr int kBySteps = 1, kByDistance = 2, kBorders4 = 64, kBorders8 = 128;
constexpr int kChessboard = 0, kCityBlock = 1, kFastMarching = 3;

struct Task {
    int width, height;
    std::vector<unsigned char> relief, marker;
};

/// The separator's own case: a two-level relief, a label per seed, the background a seed of its
/// own.
Task twoLevel(const Scene& scene) {
    Task task{scene.width, scene.height, scene.pixels, scenes::seeds(scene).pixels};
    int size = 0, count = 0;
    numeric::labelSeedsScratchSize(task.width, task.height, &size);
    std::vector<unsigned char> scratch(size);
    numeric::labelSeeds(task.marker.data(), task.width, task.width, task.height, 2, 254, 1, &count,
                        scratch.data());
    for (std::size_t i = 0; i < task.relief.size(); ++i) {
        task.relief[i] = static_cast<unsigned char>(255 - task.relief[i]);
        if (task.relief[i] == 255) task.marker[i] = 1;
    }
    return task;
}

/// A relief of 256 levels: rolling ground with fine texture, a seed every 40 pixels.
Task rolling(int width, int height) {
    Task task{width, height, {}, std::vector<unsigned char>(std::size_t(width) * height)};
    unsigned state = 1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            state = state * 1664525u + 1013904223u;
            const double ground =
                110 + 55 * std::sin(x * 0.045) + 55 * std::cos(y * 0.06 + x * 0.01);
            task.relief.push_back(static_cast<unsigned char>(ground + (state >> 24) * 24 / 255));
        }
    for (int y = 20, label = 0; y < height; y += 40)
        for (int x = 20; x < width; x += 40, ++label)
            task.marker[std::size_t(y) * width + x] = static_cast<unsigned char>(1 + label % 254);
    return task;
}

/// A one-pixel corridor flooded from its first pixel.
Task corridor(const Scene& scene) {
    Task task{scene.width, scene.height, scene.pixels,
              std::vector<unsigned char>(scene.pixels.size())};
    for (auto& pixel : task.relief) pixel = static_cast<unsigned char>(255 - pixel);
    const auto first = std::find(task.relief.begin(), task.relief.end(), 0) - task.relief.begin();
    task.marker[first] = 2;
    for (std::size_t i = 0; i < task.relief.size(); ++i)
        if (task.relief[i] == 255) task.marker[i] = 1;
    return task;
}

void runNumeric(benchmark::State& state, const Task& task, int norm, int flags) {
    std::vector<unsigned char> marker(task.marker.size());
    int size = 0;
    numeric::watershedScratchSize(task.width, task.height, &size);
    std::vector<unsigned char> scratch(size);
    for (auto _ : state) {
        std::copy(task.marker.begin(), task.marker.end(), marker.begin());
        if (numeric::watershed(task.relief.data(), task.width, marker.data(), task.width,
                               task.width, task.height, norm, flags,
                               scratch.data()) != numeric::Success)
            state.SkipWithError("the watershed failed");
        benchmark::ClobberMemory();
    }
}

void runOpenCV(benchmark::State& state, const Task& task) {
    const cv::Mat relief(task.height, task.width, CV_8U,
                         const_cast<unsigned char*>(task.relief.data()));
    cv::Mat picture, labels;
    cv::cvtColor(relief, picture, cv::COLOR_GRAY2BGR);
    cv::Mat(task.height, task.width, CV_8U, const_cast<unsigned char*>(task.marker.data()))
        .convertTo(labels, CV_32S);
    cv::Mat marker(task.height, task.width, CV_32S);
    for (auto _ : state) {
        labels.copyTo(marker);
        cv::watershed(picture, marker);
        benchmark::ClobberMemory();
    }
}

struct Order {
    const char* name;
    int norm, flags;
};
const Order kOrders[] = {
    {"chessboard steps", kChessboard, kBySteps},
    {"city block steps, lines", kCityBlock, kBySteps | kBorders4},
    {"as the filter", kFastMarching, kByDistance | kBorders8},
};

/// The task is made when a benchmark first asks for it: not before the kernels are ready to run.
using TaskMaker = std::function<Task()>;

void add(const std::string& scene, int width, int height, const TaskMaker& make,
         std::initializer_list<Order> orders) {
    const auto task = [make, made = std::make_shared<std::unique_ptr<Task>>()]() -> const Task& {
        if (!*made) *made = std::make_unique<Task>(make());
        return **made;
    };
    for (const Order& order : orders) {
        const std::string name = std::string("watershed ") + order.name + "/" + scene + "/" +
                                 std::to_string(width) + "x" + std::to_string(height) + "/";
        benchmark::RegisterBenchmark((name + "numeric").c_str(), [=](benchmark::State& state) {
            runNumeric(state, task(), order.norm, order.flags);
        })->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "OpenCV").c_str(), [=](benchmark::State& state) {
            runOpenCV(state, task());
        })->Unit(benchmark::kMillisecond);
    }
}

const bool kAdded = [] {
    for (auto [w, h] : {std::pair{1920, 1080}, {512, 512}, {3840, 2160}}) {
        const int width = w, height = h;
        add("dense discs", width, height,
            [=] { return twoLevel(scenes::denseDiscs(width, height)); },
            {kOrders[0], kOrders[1], kOrders[2]});
        add("sparse discs", width, height,
            [=] { return twoLevel(scenes::sparseDiscs(width, height)); }, {kOrders[0], kOrders[2]});
        add("256 levels", width, height, [=] { return rolling(width, height); },
            {kOrders[0], kOrders[1], kOrders[2]});
    }
    const int width = 1920, height = 1080;
    add("spiral", width, height, [=] { return corridor(scenes::spiral(width, height)); },
        {kOrders[0], kOrders[2]});
    add("serpentine", width, height, [=] { return corridor(scenes::serpentine(width, height)); },
        {kOrders[0], kOrders[2]});
    add("comb", width, height, [=] { return corridor(scenes::comb(width, height)); },
        {kOrders[0], kOrders[2]});
    return true;
}();

}  // namespace
