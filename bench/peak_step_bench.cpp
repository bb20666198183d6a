#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#ifdef BENCH_ITK
#include <itkImage.h>
#include <itkReconstructionByDilationImageFilter.h>
#endif

#include "bench/benchmarks.h"
#include "bench/scenes.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"

namespace {

using scenes::MarkerAndMask;
using scenes::Scene;

constexpr int kChessboard = 0;
constexpr int kCityBlock = 1;

/// The planes of an object separation: the mask is the distance map above a level, a share of its
/// largest value; the marker is that map lowered by the level.
MarkerAndMask separationPlanes(const Scene& scene, float levels) {
    const int width = scene.width;
    const int height = scene.height;
    const int step = 4 * width;
    MarkerAndMask planes{scene.name, width, height, std::vector<float>(scene.pixels.size()),
                         std::vector<float>(scene.pixels.size())};
    int scratchSize = 0;
    numeric::distanceTransformScratchSize(width, height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    float* mask = planes.mask.data();
    numeric::distanceTransform(scene.pixels.data(), width, mask, step, width, height,
                               scratch.get());
    float largest = 0;
    numeric::maximum(mask, step, width, height, &largest);
    numeric::thresholdFloat(mask, step, width, height, largest / levels, 0);
    numeric::subtractScalar(mask, step, largest / levels, planes.marker.data(), step, width,
                            height);
    return planes;
}

void runNumeric(benchmark::State& state, const MarkerAndMask& planes, int mode) {
    std::vector<float> plane(planes.marker.size());
    int scratchSize = 0;
    numeric::peakStepScratchSize(planes.width, planes.height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    const int step = 4 * planes.width;
    for (auto _ : state) {
        state.PauseTiming();
        std::copy(planes.marker.begin(), planes.marker.end(), plane.begin());
        state.ResumeTiming();
        const auto status = numeric::peakStep(planes.mask.data(), step, plane.data(), step,
                                              planes.width, planes.height, scratch.get(), mode);
        if (status != numeric::Success) state.SkipWithError("the peak step failed");
        benchmark::ClobberMemory();
    }
}

#ifdef BENCH_ITK
using ItkImage = itk::Image<float, 2>;

ItkImage::Pointer toItk(const std::vector<float>& pixels, int width, int height) {
    const auto image = ItkImage::New();
    image->SetRegions(
        {{0, 0},
         {static_cast<itk::SizeValueType>(width), static_cast<itk::SizeValueType>(height)}});
    image->Allocate();
    std::copy(pixels.begin(), pixels.end(), image->GetBufferPointer());
    return image;
}

void runItk(benchmark::State& state, const MarkerAndMask& planes, int mode) {
    const auto filter = itk::ReconstructionByDilationImageFilter<ItkImage, ItkImage>::New();
    filter->SetMarkerImage(toItk(planes.marker, planes.width, planes.height));
    filter->SetMaskImage(toItk(planes.mask, planes.width, planes.height));
    filter->SetFullyConnected(mode == kChessboard);
    filter->SetNumberOfWorkUnits(1);
    for (auto _ : state) {
        filter->Modified();
        filter->Update();
        benchmark::ClobberMemory();
    }
    std::vector<float> plane = planes.marker;
    int scratchSize = 0;
    numeric::peakStepScratchSize(planes.width, planes.height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    const int step = 4 * planes.width;
    numeric::peakStep(planes.mask.data(), step, plane.data(), step, planes.width, planes.height,
                      scratch.get(), mode);
    if (!std::equal(plane.begin(), plane.end(), filter->GetOutput()->GetBufferPointer()))
        state.SkipWithError("the results differ");
}
#endif

enum class Peer { No, Yes };

void add(MarkerAndMask made, Peer peer = Peer::Yes, int mode = kChessboard) {
    const auto planes = std::make_shared<const MarkerAndMask>(std::move(made));
    const std::string name =
        "peak step/" + planes->name + (mode == kCityBlock ? ", 4 neighbours/" : "/") +
        std::to_string(planes->width) + "x" + std::to_string(planes->height) + "/";
    const auto addOne = [&](const char* library, auto* run) {
        benchmark::RegisterBenchmark((name + library).c_str(), [=](benchmark::State& state) {
            run(state, *planes, mode);
        })->Unit(benchmark::kMillisecond);
    };
    addOne("numeric", runNumeric);
#ifdef BENCH_ITK
    if (peer == Peer::Yes) addOne("ITK", runItk);
#else
    static_cast<void>(peer);
#endif
}

}  // namespace

void benchmarks::addPeakStep() {
    // The initial "Details" of a separation, 10, asks for a third of them.
    constexpr float kLevels = 10.0F / 3;
    constexpr int kWidth = 1920, kHeight = 1080;
    constexpr int kSizes[][2] = {{kWidth, kHeight}, {512, 512}, {3840, 2160}};
    for (const auto& [width, height] : kSizes) {
        const Peer peer = width > kWidth ? Peer::No : Peer::Yes;
        for (const int mode : {kChessboard, kCityBlock}) {
            add(separationPlanes(scenes::denseDiscs(width, height), kLevels), peer, mode);
            add(separationPlanes(scenes::sparseDiscs(width, height), kLevels), peer, mode);
            add(separationPlanes(scenes::noise(width, height, 0.97), kLevels), peer, mode);
        }
    }
    add(separationPlanes(scenes::zeroBorder(kWidth, kHeight), kLevels));
    // The mazes and the comb take the peer seconds.
    add(scenes::floodFromFirstPixel(scenes::spiral(kWidth, kHeight)), Peer::No);
    add(scenes::floodFromFirstPixel(scenes::serpentine(kWidth, kHeight)), Peer::No);
    add(scenes::floodFromFirstPixel(scenes::transposed(scenes::serpentine(kHeight, kWidth))),
        Peer::No);
    add(scenes::combInflows(kWidth, kHeight), Peer::No);
}
