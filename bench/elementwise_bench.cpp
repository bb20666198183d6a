#include <array>
#include <cstdlib>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "bench/series.h"
#include "numeric/numeric.h"
#include "numeric/owned.h"

// The element-wise operations and the maximum beside the fastest that OpenCV has for the same
// result. Both sides work on the same planes, allocated and filled alike, and every operation may
// be repeated: it changes nothing the second time, or its time does not depend on the values.

namespace {

using namespace benchmarks;

constexpr float kLevel = 12.5F;

/// Two float planes and two planes of bytes, filled like distances and labels.
class Planes {
public:
    Planes(int planeWidth, int planeHeight)
        : width(planeWidth),
          height(planeHeight),
          floats(numeric::makeZeroPlane(width, height, &floatStep)),
          moreFloats(numeric::makeZeroPlane(width, height, &floatStep)),
          bytes(numeric::makeScratch(width * height)),
          moreBytes(numeric::makeScratch(width * height)) {
        cv::theRNG().state = 7;
        cv::randu(floatsMat(), 0, 25);
        cv::randu(moreFloatsMat(), 0, 25);
        cv::randu(bytesMat(), 0, 256);
        cv::randu(moreBytesMat(), 0, 256);
    }

    cv::Mat floatsMat() const { return plane(floats.get()); }
    cv::Mat moreFloatsMat() const { return plane(moreFloats.get()); }
    cv::Mat bytesMat() const { return {height, width, CV_8U, bytes.get()}; }
    cv::Mat moreBytesMat() const { return {height, width, CV_8U, moreBytes.get()}; }

    int width, height;
    int floatStep = 0;
    numeric::OwnedPlane floats, moreFloats;
    numeric::OwnedScratch bytes, moreBytes;

private:
    cv::Mat plane(float* data) const {
        return {height, width, CV_32F, data, static_cast<std::size_t>(floatStep)};
    }
};

using Operation = std::function<void(Planes&)>;

void require(numeric::KernelStatus status) {
    if (status != numeric::Success) std::abort();
}

/// One name of operations that give the same, ours first.
struct Case {
    std::string name;
    std::vector<std::pair<std::string, Operation>> ways;
};

cv::Mat table(const std::function<int(int)>& levelOf) {
    cv::Mat levels(1, 256, CV_8U);
    for (int level = 0; level < 256; ++level)
        levels.at<unsigned char>(level) = static_cast<unsigned char>(levelOf(level));
    return levels;
}

Case floatMaximum() {
    return {
        "maximum",
        {{"numeric",
          [](Planes& p) {
              float largest = 0;
              require(numeric::maximum(p.floats.get(), p.floatStep, p.width, p.height, &largest));
              benchmark::DoNotOptimize(largest);
          }},
         {"OpenCV minMaxLoc",
          [](Planes& p) {
              double largest = 0;
              cv::minMaxLoc(p.floatsMat(), nullptr, &largest);
              benchmark::DoNotOptimize(largest);
          }},
         {"OpenCV reduce", [row = cv::Mat()](Planes& p) mutable {
              cv::reduce(p.floatsMat(), row, 0, cv::REDUCE_MAX);
              double largest = 0;
              cv::minMaxLoc(row, nullptr, &largest);
              benchmark::DoNotOptimize(largest);
          }}}};
}

Case floatThreshold() {
    return {"thresholdFloat",
            {{"numeric",
              [](Planes& p) {
                  require(numeric::thresholdFloat(p.floats.get(), p.floatStep, p.width, p.height,
                                                  kLevel, 0));
              }},
             {"OpenCV threshold", [](Planes& p) {
                  cv::Mat plane = p.floatsMat();
                  cv::threshold(plane, plane, kLevel, 0, cv::THRESH_TOZERO);
              }}}};
}

Case scalarSubtraction() {
    return {
        "subtractScalar",
        {{"numeric",
          [](Planes& p) {
              require(numeric::subtractScalar(p.floats.get(), p.floatStep, kLevel,
                                              p.moreFloats.get(), p.floatStep, p.width, p.height));
          }},
         {"OpenCV subtract",
          [](Planes& p) {
              cv::Mat result = p.moreFloatsMat();
              cv::subtract(p.floatsMat(), cv::Scalar(kLevel), result);
          }},
         {"OpenCV convertTo", [](Planes& p) {
              cv::Mat result = p.moreFloatsMat();
              p.floatsMat().convertTo(result, CV_32F, 1, -kLevel);
          }}}};
}

Case subtraction() {
    return {"subtract",
            {{"numeric",
              [](Planes& p) {
                  require(numeric::subtract(p.moreFloats.get(), p.floatStep, p.floats.get(),
                                            p.floatStep, p.width, p.height));
              }},
             {"OpenCV subtract", [](Planes& p) {
                  cv::Mat plane = p.floatsMat();
                  cv::subtract(plane, p.moreFloatsMat(), plane);
              }}}};
}

Case bitwiseOr() {
    return {"bitwiseOr",
            {{"numeric",
              [](Planes& p) {
                  require(numeric::bitwiseOr(p.moreBytes.get(), p.width, p.bytes.get(), p.width,
                                             p.width, p.height));
              }},
             {"OpenCV bitwise_or", [](Planes& p) {
                  cv::Mat plane = p.bytesMat();
                  cv::bitwise_or(plane, p.moreBytesMat(), plane);
              }}}};
}

/// Everything but black becomes white.
Case thresholdToWhite() {
    return {
        "thresholdAbove 0",
        {{"numeric",
          [](Planes& p) {
              require(numeric::thresholdAbove(p.bytes.get(), p.width, p.width, p.height, 0, 255));
          }},
         {"OpenCV threshold", [](Planes& p) {
              cv::Mat plane = p.bytesMat();
              cv::threshold(plane, plane, 0, 255, cv::THRESH_BINARY);
          }}}};
}

/// The highest level becomes 1.
Case thresholdAboveAll() {
    return {
        "thresholdAbove 254",
        {{"numeric",
          [](Planes& p) {
              require(numeric::thresholdAbove(p.bytes.get(), p.width, p.width, p.height, 254, 1));
          }},
         {"OpenCV setTo",
          [mask = cv::Mat()](Planes& p) mutable {
              cv::Mat plane = p.bytesMat();
              cv::compare(plane, 254, mask, cv::CMP_GT);
              plane.setTo(1, mask);
          }},
         {"OpenCV LUT", [levels = table([](int l) { return l > 254 ? 1 : l; })](Planes& p) {
              cv::Mat plane = p.bytesMat();
              cv::LUT(plane, levels, plane);
          }}}};
}

/// Everything but white becomes black.
Case thresholdBelowWhite() {
    return {
        "thresholdBelow",
        {{"numeric",
          [](Planes& p) {
              require(numeric::thresholdBelow(p.bytes.get(), p.width, p.width, p.height, 255, 0));
          }},
         {"OpenCV threshold", [](Planes& p) {
              cv::Mat plane = p.bytesMat();
              cv::threshold(plane, plane, 254, 0, cv::THRESH_TOZERO);
          }}}};
}

/// The two lowest levels and the highest become black.
Case thresholdBothSides() {
    return {"thresholdBothSides",
            {{"numeric",
              [](Planes& p) {
                  require(numeric::thresholdBothSides(p.bytes.get(), p.width, p.width, p.height, 2,
                                                      0, 254, 0));
              }},
             {"OpenCV threshold",
              [](Planes& p) {
                  cv::Mat plane = p.bytesMat();
                  cv::threshold(plane, plane, 1, 0, cv::THRESH_TOZERO);
                  cv::threshold(plane, plane, 254, 0, cv::THRESH_TOZERO_INV);
              }},
             {"OpenCV LUT",
              [levels = table([](int l) { return l < 2 || l > 254 ? 0 : l; })](Planes& p) {
                  cv::Mat plane = p.bytesMat();
                  cv::LUT(plane, levels, plane);
              }}}};
}

}  // namespace

void benchmarks::addElementwise() {
    const Case cases[] = {floatMaximum(),      floatThreshold(),      scalarSubtraction(),
                          subtraction(),       bitwiseOr(),           thresholdToWhite(),
                          thresholdAboveAll(), thresholdBelowWhite(), thresholdBothSides()};
    for (const Case& operation : cases)
        for (const Size size : kSizes)
            for (const auto& [library, run] : operation.ways)
                add("elementwise", operation.name, size, library,
                    [size, once = run](benchmark::State& state) {
                        std::array<Planes, 1> planes{Planes(size.width, size.height)};
                        measure(state, planes, once);
                    });
}
