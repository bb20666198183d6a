#include <benchmark/benchmark.h>

#include <opencv2/core/utility.hpp>

#include "bench/benchmarks.h"

int main(int argc, char** argv) {
    cv::setNumThreads(1);  // our kernels run in the caller's thread; so do their peers
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmarks::addDistance();
    benchmarks::addElementwise();
    benchmarks::addPeakStep();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
