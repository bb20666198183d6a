#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace benchmarks {

struct Size {
    int width;
    int height;
};

inline constexpr Size kFullHd{1920, 1080};
inline constexpr Size kSmall{512, 512};
inline constexpr Size k4K{3840, 2160};
/// Sizes that show how the cost of a pixel grows with the plane.
inline constexpr Size kSizes[] = {kFullHd, kSmall, k4K};

/// Registers a measurement as kernel/scene/WIDTHxHEIGHT/library; bench/ratios.py relies on that
/// name. Our own library is "numeric".
void add(const std::string& kernel, const std::string& scene, Size size, const std::string& library,
         const std::function<void(benchmark::State&)>& run);

// What main registers, kernel by kernel.
void addDeconvFft();
void addDeconvLr();
void addDistance();
void addElementwise();
void addLabel();
void addPeakStep();
void addSeparator();
void addWatershed();

}  // namespace benchmarks
