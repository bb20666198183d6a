#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "planes.h"

namespace numeric {
namespace {

using namespace test;

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
    return plane.set([&](int, int) { return static_cast<unsigned char>(random()); });
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
/// not need it leaves one of the operands alone.
template <class Pixel>
struct Operation {
    const char* name;
    std::function<Pixel(Pixel source, Pixel target)> expected;
    std::function<KernelStatus(const TestPlane<Pixel>& source, TestPlane<Pixel>& target)> run;
};

/// The operation on one plane or from one into another, three rows of a width.
template <class Pixel>
void expectOperation(const Operation<Pixel>& operation, const TestPlane<Pixel>& source,
                     TestPlane<Pixel>& target) {
    TestPlane<Pixel> expected(target.width(), target.height());
    expected.set(
        [&](int x, int y) { return operation.expected(source.at(x, y), target.at(x, y)); });
    ASSERT_EQ(operation.run(source, target), Success) << operation.name;
    ASSERT_TRUE(samePixels(expected, target)) << operation.name;
}

const Operation<float> kSubtractScalar = {
    "subtract scalar", [](float source, float) { return source - 1.7F; },
    [](const FloatPlane& s, FloatPlane& t) {
        return subtractScalar(s.data(), s.step(), 1.7F, t.data(), t.step(), s.width(), s.height());
    }};

TEST(Elementwise, FloatOperationsEqualTheirFormulaAtEveryWidth) {
    std::vector<Operation<float>> operations = {
        kSubtractScalar,
        {"subtract", [](float source, float target) { return target - source; },
         [](const FloatPlane& s, FloatPlane& t) {
             return subtract(s.data(), s.step(), t.data(), t.step(), s.width(), s.height());
         }}};
    for (const float level : {2.5F, 0.0F, -0.0F, kInf, kNaN})
        operations.push_back(
            {"threshold", [=](float, float target) { return target < level ? -7.0F : target; },
             [=](const FloatPlane&, FloatPlane& t) {
                 return thresholdFloat(t.data(), t.step(), t.width(), t.height(), level, -7.0F);
             }});
    sweep<float>([&](int width, Layout layout) {
        for (const Operation<float>& operation : operations) {
            FloatPlane source = specialFloats(width, 3, layout, width);
            FloatPlane target = specialFloats(width, 3, {12, 8}, width + 1000);
            expectOperation(operation, source, target);
            expectOperation(operation, source, source);
        }
    });
}

TEST(Elementwise, ByteOperationsEqualTheirFormulaAtEveryWidth) {
    using Byte = unsigned char;
    const Operation<Byte> operations[] = {
        {"or", [](Byte source, Byte target) { return static_cast<Byte>(source | target); },
         [](const BytePlane& s, BytePlane& t) {
             return bitwiseOr(s.data(), s.step(), t.data(), t.step(), s.width(), s.height());
         }},
        {"both sides",
         [](Byte, Byte pixel) { return pixel < 50    ? Byte{1}
                                       : pixel > 200 ? Byte{2}
                                                     : pixel; },
         [](const BytePlane&, BytePlane& t) {
             return thresholdBothSides(t.data(), t.step(), t.width(), t.height(), 50, 1, 200, 2);
         }}};
    sweep<Byte>([&](int width, Layout layout) {
        for (const Operation<Byte>& operation : operations) {
            BytePlane source = randomBytes(width, 3, layout, width);
            BytePlane target = randomBytes(width, 3, {5, 3}, width + 1000);
            expectOperation(operation, source, target);
            expectOperation(operation, source, source);
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

TEST(Elementwise, MaximumFindsEveryPositionAndPassesOverNaN) {
    sweep<float>([](int width, Layout layout) {
        FloatPlane plane(width, 2, layout);
        plane.fill(-3.0F);
        float largest = kNaN;
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < width; ++x) {
                plane.at(x, y) = -1.5F;
                plane.at((x + 1) % width, 1 - y) = kNaN;
                ASSERT_EQ(maximum(plane.data(), plane.step(), width, 2, &largest), Success);
                ASSERT_EQ(largest, -1.5F) << x << ", " << y;
                plane.at(x, y) = plane.at((x + 1) % width, 1 - y) = -3.0F;
            }
        }
    });
}

TEST(Elementwise, MaximumOfZerosIsPlusZeroAndOfNothingMinusInfinity) {
    sweep<float>([](int width, Layout layout) {
        FloatPlane plane(width, 2, layout);
        plane.set([](int x, int) { return x % 3 == 1 ? 0.0F : -0.0F; });
        float largest = kNaN;
        ASSERT_EQ(maximum(plane.data(), plane.step(), width, 2, &largest), Success);
        ASSERT_EQ(largest, 0.0F);
        ASSERT_FALSE(std::signbit(largest));
        plane.fill(kNaN);
        ASSERT_EQ(maximum(plane.data(), plane.step(), width, 2, &largest), Success);
        ASSERT_EQ(largest, -kInf);
        plane.at(width - 1, 1) = kInf;
        ASSERT_EQ(maximum(plane.data(), plane.step(), width, 2, &largest), Success);
        ASSERT_EQ(largest, kInf);
    });
}

TEST(Elementwise, ByteThresholdsForLevelsInsideAndOutsideTheRangeOfAByte) {
    // All 256 pixel values in one row; any integer compares as the number it is.
    const int levels[] = {INT_MIN, -1, 0, 1, 2, 127, 128, 254, 255, 256, INT_MAX};
    const auto byte = [](int value) {
        return static_cast<unsigned char>(std::clamp(value, 0, 255));
    };
    forEachSlot([&] {
        BytePlane all(256, 1, {0, 1});
        all.set([](int x, int) { return static_cast<unsigned char>(x); });
        for (const int lower : levels) {
            for (const int value : {-5, 77, 300}) {
                BytePlane above = all, below = all, expectedAbove = all, expectedBelow = all;
                expectedAbove.set([&](int x, int) { return x > lower ? byte(value) : byte(x); });
                expectedBelow.set([&](int x, int) { return x < lower ? byte(value) : byte(x); });
                thresholdAbove(above.data(), above.step(), 256, 1, lower, value);
                thresholdBelow(below.data(), below.step(), 256, 1, lower, value);
                ASSERT_TRUE(samePixels(expectedAbove, above)) << "level " << lower;
                ASSERT_TRUE(samePixels(expectedBelow, below)) << "level " << lower;
            }
            for (const int upper : levels) {
                BytePlane both = all, expected = all;
                expected.set([&](int x, int) { return byte(x < lower ? 11 : x > upper ? 22 : x); });
                thresholdBothSides(both.data(), both.step(), 256, 1, lower, 11, upper, 22);
                ASSERT_TRUE(samePixels(expected, both)) << lower << ", " << upper;
            }
        }
    });
}

}  // namespace
}  // namespace numeric
