#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#ifdef BENCH_ITK
#include <itkImage.h>
#include <itkReconstructionByDilationImageFilter.h>
#endif

#include "bench/scenes.h"
#include "bench/series.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"

namespace {

using namespace benchmarks;
using scenes::MarkerAndMask;
using scenes::Scene;
using Planes = std::vector<MarkerAndMask>;

constexpr int kChessboard = 0;
constexpr int kCityBlock = 1;

/// The planes of an object separation: the mask is the distance map above a level, a share of its
/// largest value; the marker is that map lowered by the level.
MarkerAndMask separationPlanes(const Scene& scene, float levels) {
    const int width = scene.width;
    const int height = scene.height;
    const int step = 4 * width;
    MarkerAndMask planes{width, height, std::vector<float>(scene.pixels.size()),
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

void runNumeric(benchmark::State& state, const Planes& inputs, int mode) {
    const int width = inputs.front().width;
    const int height = inputs.front().height;
    const int step = 4 * width;
    std::vector<float> plane;
    int scratchSize = 0;
    numeric::peakStepScratchSize(width, height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    measure(
        state, inputs, [&](const MarkerAndMask& planes) { plane = planes.marker; },
        [&](const MarkerAndMask& planes) {
            const auto status = numeric::peakStep(planes.mask.data(), step, plane.data(), step,
                                                  width, height, scratch.get(), mode);
            if (status != numeric::Success) state.SkipWithError("the peak step failed");
        });
}

#ifdef BENCH_ITK
using ItkImage = itk::Image<float, 2>;
using ItkFilter = itk::ReconstructionByDilationImageFilter<ItkImage, ItkImage>;

ItkImage::Pointer toItk(const std::vector<float>& pixels, int width, int height) {
    const auto image = ItkImage::New();
    image->SetRegions(
        {{0, 0},
         {static_cast<itk::SizeValueType>(width), static_cast<itk::SizeValueType>(height)}});
    image->Allocate();
    std::copy(pixels.begin(), pixels.end(), image->GetBufferPointer());
    return image;
}

ItkFilter::Pointer itkFilter(const MarkerAndMask& planes, int mode) {
    const auto filter = ItkFilter::New();
    filter->SetMarkerImage(toItk(planes.marker, planes.width, planes.height));
    filter->SetMaskImage(toItk(planes.mask, planes.width, planes.height));
    filter->SetFullyConnected(mode == kChessboard);
    filter->SetNumberOfWorkUnits(1);
    return filter;
}

void runItk(benchmark::State& state, const Planes& inputs, int mode) {
    std::vector<ItkFilter::Pointer> filters;
    for (const MarkerAndMask& planes : inputs) filters.push_back(itkFilter(planes, mode));
    measure(state, filters, [](ItkFilter::Pointer& filter) {
        filter->Modified();
        filter->Update();
    });
    const auto& [width, height, marker, mask] = inputs.back();
    std::vector<float> plane = marker;
    int scratchSize = 0;
    numeric::peakStepScratchSize(width, height, &scratchSize);
    const auto scratch = numeric::makeScratch(scratchSize);
    numeric::peakStep(mask.data(), 4 * width, plane.data(), 4 * width, width, height, scratch.get(),
                      mode);
    const float* const theirs = filters.back()->GetOutput()->GetBufferPointer();
    if (!std::equal(plane.begin(), plane.end(), theirs)) state.SkipWithError("the results differ");
}
#endif

enum class Peer { No, Yes };

void addSeries(const SharedSeries<MarkerAndMask>& series, Peer peer = Peer::Yes,
               int mode = kChessboard) {
    const std::string scene = series->name + (mode == kCityBlock ? ", 4 neighbours" : "");
    const auto addOne = [&](const char* library,
                            void (*run)(benchmark::State&, const Planes&, int)) {
        add("peak step", scene, series->size, library,
            [=](benchmark::State& state) { run(state, series->inputs(), mode); });
    };
    addOne("numeric", runNumeric);
#ifdef BENCH_ITK
    if (peer == Peer::Yes) addOne("ITK", runItk);
#else
    static_cast<void>(peer);
#endif
}

SharedSeries<MarkerAndMask> separations(std::string name, Size size,
                                        Scene (*make)(int width, int height, unsigned seed)) {
    // The initial "Details" of a separation, 10, asks for a third of them.
    constexpr float kLevels = 10.0F / 3;
    return differing<MarkerAndMask>(std::move(name), size,
                                    [make](int width, int height, unsigned seed) {
                                        return separationPlanes(make(width, height, seed), kLevels);
                                    });
}

}  // namespace

void benchmarks::addPeakStep() {
    for (const Size size : kSizes) {
        // The peer takes seconds here and for the mazes and the comb.
        const Peer peer = size.width > kFullHd.width ? Peer::No : Peer::Yes;
        const SharedSeries<MarkerAndMask> all[] = {
            separations("dense discs", size, scenes::denseDiscs),
            separations("sparse discs", size, scenes::sparseDiscs),
            separations("noise", size, [](int width, int height, unsigned seed) {
                return scenes::noise(width, height, seed, 0.97);
            })};
        for (const auto& series : all)
            for (const int mode : {kChessboard, kCityBlock}) addSeries(series, peer, mode);
    }
    addSeries(separations("zero border", kFullHd, [](int width, int height, unsigned) {
        return scenes::zeroBorder(width, height);
    }));
    using scenes::floodFromFirstPixel;
    const auto addCorridor = [](const char* name, std::function<MarkerAndMask(int, int)> make) {
        addSeries(single<MarkerAndMask>(name, kFullHd, std::move(make)), Peer::No);
    };
    addCorridor("spiral", [](int w, int h) { return floodFromFirstPixel(scenes::spiral(w, h)); });
    addCorridor("serpentine",
                [](int w, int h) { return floodFromFirstPixel(scenes::serpentine(w, h)); });
    addCorridor("transposed serpentine", [](int w, int h) {
        return floodFromFirstPixel(scenes::transposed(scenes::serpentine(h, w)));
    });
    addCorridor("comb", scenes::combInflows);
}
