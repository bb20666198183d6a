#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "planes.h"

namespace numeric {
namespace {

using namespace test;

using Byte = unsigned char;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// Floats among which every kind of special value is common.
FloatPlane specialFloats(int width, int height, Layout layout, unsigned seed) {
    const float special[] = {kNaN, -kNaN, kInf, -kInf, 0.0F, -0.0F, 1e-40F, 2.5F};
    std::mt19937 random(seed);
    FloatPlane plane(width, height, layout);
    return plane.set([&](int, int) {
        const unsigned pick = random() % 16;
        return pick < 8 ? special[pick] : static_cast<float>(random() % 2000) / 100 - 10;
    });
}

BytePlane randomBytes(int width, int height, Layout layout, unsigned seed) {
    std::mt19937 random(seed);
    BytePlane plane(width, height, layout);
    return plane.set([&](int, int) { return static_cast<Byte>(random()); });
}

/// Runs check(width, layout) in every slot for all widths and layouts of a pixel type.
template <class Pixel, class Check>
void sweep(Check check) {
    forEachSlot([&] {
        for (const Layout layout : layouts<Pixel>())
            for (const int width : widths()) check(width, layout);
    });
}

/// What a pixel becomes, and the call that should make it so for a whole plane. A kernel that does
/// not need it leaves the source alone.
template <class Pixel>
struct Operation {
    std::string name;
    std::function<Pixel(Pixel source, Pixel target)> expected;
    std::function<KernelStatus(const Pixel* source, int sourceStep, Pixel* target, int targetStep,
                               int width, int height)>
        run;
};

/// The operation on one plane or from one into another of the same size.
template <class Pixel>
void expectOperation(const Operation<Pixel>& operation, const TestPlane<Pixel>& source,
                     TestPlane<Pixel>& target) {
    TestPlane<Pixel> expected(target.width(), target.height());
    expected.set(
        [&](int x, int y) { return operation.expected(source.at(x, y), target.at(x, y)); });
    ASSERT_EQ(operation.run(source.data(), source.step(), target.data(), target.step(),
                            target.width(), target.height()),
              Success)
        << operation.name;
    ASSERT_TRUE(samePixels(expected, target)) << operation.name;
}

/// From one plane into another of another layout, and in place.
template <class Pixel, class Make>
void expectOperations(const std::vector<Operation<Pixel>>& operations, Make make) {
    constexpr int size = sizeof(Pixel);
    sweep<Pixel>([&](int width, Layout layout) {
        for (const Operation<Pixel>& operation : operations) {
            TestPlane<Pixel> source = make(width, 3, layout, width);
            TestPlane<Pixel> target = make(width, 3, {3 * size, 2 * size}, width + 1000);
            expectOperation(operation, source, target);
            expectOperation(operation, source, source);
        }
    });
}

const Operation<float> kSubtractScalar = {
    "subtract scalar", [](float source, float) { return source - 1.7F; },
    [](const float* source, int sourceStep, auto... target) {
        return subtractScalar(source, sourceStep, 1.7F, target...);
    }};

TEST(Elementwise, FloatOperationsEqualTheirFormulaAtEveryWidth) {
    std::vector<Operation<float>> operations = {
        kSubtractScalar,
        {"subtract", [](float source, float target) { return target - source; }, subtract}};
    for (const float level : {2.5F, 0.0F, -0.0F, kInf, kNaN})
        operations.push_back({"threshold",
                              [=](float, float target) { return target < level ? -7.0F : target; },
                              [=](const float*, int, auto... target) {
                                  return thresholdFloat(target..., level, -7.0F);
                              }});
    expectOperations(operations, specialFloats);
}

/// The byte thresholds at two levels, which write values that are clamped to those of a byte.
std::vector<Operation<Byte>> thresholds(int lower, int lowerValue, int upper, int upperValue) {
    const auto byte = [](int value) { return static_cast<Byte>(std::clamp(value, 0, 255)); };
    const std::string levels = ' ' + std::to_string(lower) + ", " + std::to_string(upper);
    return {{"above" + levels, [=](Byte, Byte p) { return p > upper ? byte(upperValue) : p; },
             [=](const Byte*, int, auto... target) {
                 return thresholdAbove(target..., upper, upperValue);
             }},
            {"below" + levels, [=](Byte, Byte p) { return p < lower ? byte(lowerValue) : p; },
             [=](const Byte*, int, auto... target) {
                 return thresholdBelow(target..., lower, lowerValue);
             }},
            {"both sides" + levels,
             [=](Byte, Byte p) {
                 return p < lower ? byte(lowerValue) : p > upper ? byte(upperValue) : p;
             },
             [=](const Byte*, int, auto... target) {
                 return thresholdBothSides(target..., lower, lowerValue, upper, upperValue);
             }}};
}

TEST(Elementwise, ByteOperationsEqualTheirFormulaAtEveryWidth) {
    std::vector<Operation<Byte>> operations = thresholds(50, 1, 200, 2);
    operations.push_back(
        {"or", [](Byte source, Byte target) { return static_cast<Byte>(source | target); },
         bitwiseOr});
    expectOperations(operations, randomBytes);
}

TEST(Elementwise, ByteThresholdsForLevelsInsideAndOutsideTheRangeOfAByte) {
    // All 256 pixel values in one row; any integer compares as the number it is.
    const int levels[] = {INT_MIN, -1, 0, 1, 2, 127, 128, 254, 255, 256, INT_MAX};
    forEachSlot([&] {
        for (const int lower : levels)
            for (const int upper : levels)
                for (const int value : {-5, 77, 300})
                    for (const auto& operation : thresholds(lower, value, upper, 255 - value)) {
                        BytePlane all(256, 1, {0, 1});
                        all.set([](int x, int) { return static_cast<Byte>(x); });
                        expectOperation(operation, all, all);
                    }
    });
}

// So large that the result is written past the caches.
TEST(Elementwise, SubtractScalarIntoALargePlane) {
    const FloatPlane source = specialFloats(4097, 1031, {4, 0}, 3);
    forEachSlot([&] {
        FloatPlane target(4097, 1031, {8, 4});
        expectOperation(kSubtractScalar, source, target);
    });
}

float maximumOf(const FloatPlane& plane) {
    float largest = kNaN;
    EXPECT_EQ(maximum(plane.data(), plane.step(), plane.width(), plane.height(), &largest),
              Success);
    return largest;
}

TEST(Elementwise, MaximumFindsEveryPositionAndPassesOverNaN) {
    sweep<float>([](int width, Layout layout) {
        FloatPlane plane(width, 2, layout);
        plane.fill(-3.0F);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < width; ++x) {
                plane.at(x, y) = -1.5F;
                plane.at((x + 1) % width, 1 - y) = kNaN;
                ASSERT_EQ(maximumOf(plane), -1.5F) << x << ", " << y;
                plane.at(x, y) = plane.at((x + 1) % width, 1 - y) = -3.0F;
            }
        // Of zeros it is plus zero, and of nothing minus infinity.
        plane.set([](int x, int) { return x % 3 == 1 ? 0.0F : -0.0F; });
        ASSERT_EQ(maximumOf(plane), 0.0F);
        ASSERT_FALSE(std::signbit(maximumOf(plane)));
        plane.fill(kNaN);
        ASSERT_EQ(maximumOf(plane), -kInf);
        plane.at(width - 1, 1) = kInf;
        ASSERT_EQ(maximumOf(plane), kInf);
    });
}

}  // namespace
}  // namespace numeric
