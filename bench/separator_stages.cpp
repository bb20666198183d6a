// Writes what the object separator sees stage by stage, for its documentation.
//
// usage: separator_stages INPUT DETAILS OUTPUT_PREFIX
//
// INPUT is a two-level picture. Writes PREFIX-distance.png, -peaks.png, -seeds.png and
// -regions.png. The stages are those of FxImageFilterDistance, from the same kernels with the same
// arguments.

#include <OpenImageIO/imagebuf.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "numeric/owned.h"

namespace {

using Bytes = std::vector<unsigned char>;

struct Stages {
    int width, height;
    Bytes object, peaks, seeds, regions;
    std::vector<float> distance;
};

numeric::OwnedScratch scratchFor(numeric::KernelStatus (*sizeOf)(int, int, int*), int width,
                                 int height) {
    int size = 0;
    static_cast<void>(sizeOf(width, height, &size));
    return numeric::makeScratch(size);
}

void check(numeric::KernelStatus status, const char* stage) {
    if (status == numeric::Success) return;
    std::fprintf(stderr, "separator_stages: the %s failed (%d)\n", stage, status);
    std::exit(1);
}

void widen(Bytes& plane, int width, int height) {
    const Bytes before = plane;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int v = std::max(0, y - 1); v <= std::min(height - 1, y + 1); ++v)
                for (int u = std::max(0, x - 1); u <= std::min(width - 1, x + 1); ++u)
                    plane[std::size_t(y) * width + x] = std::max(
                        plane[std::size_t(y) * width + x], before[std::size_t(v) * width + u]);
}

Bytes scaled(const std::vector<float>& plane, float most) {
    Bytes out(plane.size());
    for (std::size_t i = 0; i < plane.size(); ++i)
        out[i] = most > 0 ? static_cast<unsigned char>(plane[i] / most * 255 + 0.5f) : 0;
    return out;
}

Stages separate(Bytes object, int width, int height, double details) {
    Stages stages{width, height, object, {}, {}, {}, std::vector<float>(object.size())};
    const int step = 4 * width;
    float* distance = stages.distance.data();
    check(numeric::distanceTransform(
              object.data(), width, distance, step, width, height,
              scratchFor(numeric::distanceTransformScratchSize, width, height).get()),
          "distance transform");
    float farthest = 0;
    check(numeric::maximum(distance, step, width, height, &farthest), "maximum");
    const float rise = farthest / static_cast<float>(details / 3.0);
    std::vector<float> peaks = stages.distance, work(peaks.size());
    check(numeric::thresholdFloat(peaks.data(), step, width, height, rise, 0), "threshold");
    check(numeric::subtractScalar(peaks.data(), step, rise, work.data(), step, width, height),
          "subtraction");
    check(numeric::peakStep(peaks.data(), step, work.data(), step, width, height,
                            scratchFor(numeric::peakStepScratchSize, width, height).get(), 0),
          "peak step");
    check(numeric::subtract(work.data(), step, peaks.data(), step, width, height), "subtraction");
    float strongest = 0;
    check(numeric::maximum(peaks.data(), step, width, height, &strongest), "maximum");

    stages.peaks = scaled(peaks, strongest);
    stages.seeds = stages.peaks;
    widen(stages.seeds, width, height);
    int count = 0;
    check(numeric::labelSeeds(stages.seeds.data(), width, width, height, 2, 254, 1, &count,
                              scratchFor(numeric::labelSeedsScratchSize, width, height).get()),
          "labelling");
    std::printf("%d seeds\n", count);

    stages.regions = stages.seeds;
    Bytes relief(object.size());
    for (std::size_t i = 0; i < relief.size(); ++i) {
        relief[i] = static_cast<unsigned char>(255 - object[i]);
        stages.regions[i] |= relief[i];
        if (stages.regions[i] == 255) stages.regions[i] = 1;
    }
    check(numeric::watershed(relief.data(), width, stages.regions.data(), width, width, height, 3,
                             130, scratchFor(numeric::watershedScratchSize, width, height).get()),
          "watershed");
    return stages;
}

/// A colour of its own for each label; the background stays dark, dividing lines are white.
std::array<unsigned char, 3> colourOf(int label) {
    if (label <= 1) return {24, 24, 28};
    if (label == 255) return {255, 255, 255};
    const unsigned hash = static_cast<unsigned>(label) * 2654435761u;
    return {static_cast<unsigned char>(90 + (hash >> 24) % 150),
            static_cast<unsigned char>(90 + (hash >> 16) % 150),
            static_cast<unsigned char>(90 + (hash >> 8) % 150)};
}

void write(const std::string& path, const Bytes& pixels, int width, int height, int channels) {
    OIIO::ImageBuf buffer(OIIO::ImageSpec(width, height, channels, OIIO::TypeDesc::UINT8),
                          const_cast<unsigned char*>(pixels.data()));
    if (buffer.write(path)) return;
    std::fprintf(stderr, "separator_stages: cannot write %s: %s\n", path.c_str(),
                 buffer.geterror().c_str());
    std::exit(1);
}

void writeColoured(const std::string& path, const Bytes& labels, int width, int height) {
    Bytes picture;
    for (unsigned char label : labels)
        for (unsigned char sample : colourOf(label)) picture.push_back(sample);
    write(path, picture, width, height, 3);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: separator_stages INPUT DETAILS OUTPUT_PREFIX\n");
        return 2;
    }
    OIIO::ImageBuf input(argv[1]);
    if (!input.read(0, 0, true, OIIO::TypeDesc::UINT8)) {
        std::fprintf(stderr, "separator_stages: cannot read %s: %s\n", argv[1],
                     input.geterror().c_str());
        return 66;
    }
    const int width = input.roi().width(), height = input.roi().height();
    Bytes object(std::size_t(width) * height);
    input.get_pixels(OIIO::ROI(0, width, 0, height, 0, 1, 0, 1), OIIO::TypeDesc::UINT8,
                     object.data());

    const Stages stages = separate(object, width, height, std::atof(argv[2]));
    const std::string prefix = argv[3];
    const float farthest = *std::max_element(stages.distance.begin(), stages.distance.end());
    write(prefix + "-distance.png", scaled(stages.distance, farthest), width, height, 1);
    write(prefix + "-peaks.png", stages.peaks, width, height, 1);
    writeColoured(prefix + "-seeds.png", stages.seeds, width, height);
    writeColoured(prefix + "-regions.png", stages.regions, width, height);
    return 0;
}
