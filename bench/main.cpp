#include <benchmark/benchmark.h>

#include <opencv2/core/utility.hpp>

#include "bench/benchmarks.h"

void benchmarks::add(const std::string& kernel, const std::string& scene, Size size,
                     const std::string& library,
                     const std::function<void(benchmark::State&)>& run) {
    const std::string name = kernel + "/" + scene + "/" + std::to_string(size.width) + "x" +
                             std::to_string(size.height) + "/" + library;
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

int main(int argc, char** argv) {
    cv::setNumThreads(1);  // our kernels run in the caller's thread; so do their peers
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmarks::addDeconvFft();
    benchmarks::addDeconvLr();
    benchmarks::addDistance();
    benchmarks::addPeakStep();
    benchmarks::addLabel();
    benchmarks::addWatershed();
    benchmarks::addElementwise();
    benchmarks::addSeparator();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
