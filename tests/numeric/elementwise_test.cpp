#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <random>

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

TEST(Elementwise, ThresholdFloatReplacesWhatLiesBelowOnly) {
    sweep<float>([](int width, Layout layout) {
        for (const float level : {2.5F, 0.0F, -0.0F, kInf, kNaN}) {
            FloatPlane actual = specialFloats(width, 3, layout, width);
            FloatPlane expected = actual;
            expected.set([&](int x, int y) {
                return expected.at(x, y) < level ? -7.0F : expected.at(x, y);
            });
            ASSERT_EQ(thresholdFloat(actual.data(), actual.step(), width, 3, level, -7.0F),
                      Success);
            ASSERT_TRUE(samePixels(expected, actual)) << "level " << level;
            ASSERT_TRUE(actual.surroundingsIntact());
        }
    });
}

TEST(Elementwise, SubtractScalarIntoAnotherPlaneAndInPlace) {
    sweep<float>([](int width, Layout layout) {
        FloatPlane source = specialFloats(width, 3, layout, width);
        FloatPlane expected(width, 3);
        expected.set([&](int x, int y) { return source.at(x, y) - 1.7F; });
        FloatPlane actual(width, 3, {8, 4});
        ASSERT_EQ(subtractScalar(source.data(), source.step(), 1.7F, actual.data(), actual.step(),
                                 width, 3),
                  Success);
        ASSERT_TRUE(samePixels(expected, actual));
        ASSERT_TRUE(actual.surroundingsIntact());
        ASSERT_EQ(subtractScalar(source.data(), source.step(), 1.7F, source.data(), source.step(),
                                 width, 3),
                  Success);
        ASSERT_TRUE(samePixels(expected, source));
        ASSERT_TRUE(source.surroundingsIntact());
    });
}

// So large that the result is written past the caches.
TEST(Elementwise, SubtractScalarIntoALargePlane) {
    const FloatPlane source = specialFloats(4097, 1031, {4, 0}, 3);
    FloatPlane expected(4097, 1031);
    expected.set([&](int x, int y) { return source.at(x, y) - 1.7F; });
    forEachSlot([&] {
        FloatPlane actual(4097, 1031, {8, 4});
        ASSERT_EQ(subtractScalar(source.data(), source.step(), 1.7F, actual.data(), actual.step(),
                                 4097, 1031),
                  Success);
        ASSERT_TRUE(samePixels(expected, actual));
        ASSERT_TRUE(actual.surroundingsIntact());
    });
}

TEST(Elementwise, SubtractTakesTheFirstPlaneFromTheSecond) {
    sweep<float>([](int width, Layout layout) {
        const FloatPlane source = specialFloats(width, 3, layout, width);
        FloatPlane actual = specialFloats(width, 3, {12, 8}, width + 1000);
        FloatPlane expected = actual;
        expected.set([&](int x, int y) { return expected.at(x, y) - source.at(x, y); });
        ASSERT_EQ(subtract(source.data(), source.step(), actual.data(), actual.step(), width, 3),
                  Success);
        ASSERT_TRUE(samePixels(expected, actual));
        ASSERT_TRUE(actual.surroundingsIntact());
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

TEST(Elementwise, BitwiseOr) {
    sweep<unsigned char>([](int width, Layout layout) {
        const BytePlane source = randomBytes(width, 3, layout, width);
        BytePlane actual = randomBytes(width, 3, {5, 3}, width + 1000);
        BytePlane expected = actual;
        expected.set([&](int x, int y) {
            return static_cast<unsigned char>(expected.at(x, y) | source.at(x, y));
        });
        ASSERT_EQ(bitwiseOr(source.data(), source.step(), actual.data(), actual.step(), width, 3),
                  Success);
        ASSERT_TRUE(samePixels(expected, actual));
        ASSERT_TRUE(actual.surroundingsIntact());
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

TEST(Elementwise, ByteThresholdsAtEveryWidth) {
    sweep<unsigned char>([](int width, Layout layout) {
        BytePlane actual = randomBytes(width, 3, layout, width);
        BytePlane expected = actual;
        expected.set([&](int x, int y) -> unsigned char {
            const int pixel = expected.at(x, y);
            return static_cast<unsigned char>(pixel < 50 ? 1 : pixel > 200 ? 2 : pixel);
        });
        ASSERT_EQ(thresholdBothSides(actual.data(), actual.step(), width, 3, 50, 1, 200, 2),
                  Success);
        ASSERT_TRUE(samePixels(expected, actual));
        ASSERT_TRUE(actual.surroundingsIntact());
    });
}

}  // namespace
}  // namespace numeric
