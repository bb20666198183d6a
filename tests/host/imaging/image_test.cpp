#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"

namespace {

TEST(Image, ConstructorLaysOutRowsAndRefusesWhatCannotBe) {
    const HkImage empty;
    EXPECT_TRUE(!empty.data && empty.width == 0 && empty.roiHeight == 0 && empty.channels == 0);
    for (const unsigned alignment : {1u, 3u, 4u, 32u}) {
        const HkImage image(5, 4, 3, nullptr, alignment);
        ASSERT_TRUE(image.data);
        EXPECT_EQ(image.step % static_cast<int>(alignment), 0);
        EXPECT_TRUE(image.step >= 15 && image.step < 15 + static_cast<int>(alignment));
        EXPECT_TRUE(image.roiWidth == 5 && image.roiHeight == 4);
        EXPECT_EQ(std::count(image.data, image.data + image.step * 4, 0), image.step * 4);
    }
    unsigned char pixels[4 * 16];
    std::fill(std::begin(pixels), std::end(pixels), 7);
    {
        const HkImage shown(5, 4, 3, pixels, 4);
        EXPECT_TRUE(shown.data == pixels && shown.step == 16);
    }
    EXPECT_EQ(std::count(std::begin(pixels), std::end(pixels), 7), 64);

    // Width, height, channels, row alignment (-1: the largest unsigned number).
    constexpr int impossible[][4] = {{0, 1, 1, 4},
                                     {1, 0, 1, 4},
                                     {-1, 1, 1, 4},
                                     {1, -5, 1, 4},
                                     {1, 1, 0, 4},
                                     {1, 1, 5, 4},
                                     {1, 1, -1, 4},
                                     {1, 1, 1, 0},
                                     {1, 1, 1, -1},
                                     {INT_MAX, 1, 4, 4},
                                     {INT_MAX, INT_MAX, 1, 1},
                                     {65536, 65536, 1, 4},
                                     {1 << 29, 2, 4, 4}};
    for (const auto& [width, height, channels, alignment] : impossible)
        for (unsigned char* rows : {static_cast<unsigned char*>(nullptr), pixels}) {
            const HkImage image(width, height, channels, rows, static_cast<unsigned>(alignment));
            EXPECT_TRUE(!image.data && image.width == 0 && image.step == 0 && image.channels == 0)
                << width << " x " << height << " x " << channels << ", " << alignment;
        }
}

/// A float plane as filters have it: rows of width floats raised to a multiple of 8.
struct FloatPlane {
    FloatPlane(int width, int height)
        : rowLength((width + 7) / 8 * 8),
          values(static_cast<std::size_t>(rowLength) * height, -77) {}
    float& at(int x, int y) { return values[static_cast<std::size_t>(rowLength) * y + x]; }
    int rowLength;
    std::vector<float> values;
};

TEST(Image, FloatPlanesHaveAStepOfTheirOwn) {
    for (const int width : {1, 7, 8, 9, 13, 64}) {
        // Five rows with three bytes after each; the region is a part of them.
        const int step = width + 3;
        const int roiWidth = (width + 1) / 2;
        std::vector<unsigned char> bytes(static_cast<std::size_t>(step) * 5);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(i * 89);
        const std::vector<unsigned char> before = bytes;
        HkImage image(width, 5, 1, bytes.data(), static_cast<unsigned>(step));
        image.roiWidth = roiWidth;
        image.roiHeight = 3;
        FloatPlane plane(width, 5);
        ASSERT_TRUE(image.getBufferCopy32f(plane.values.data(), -1.5f, 3.f));
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < plane.rowLength; ++x) {
                const bool inside = x < roiWidth && y < 3;
                const double sample = before[y * step + std::min(x, width)];
                ASSERT_NEAR(plane.at(x, y), inside ? -1.5 + sample * 4.5 / 255 : -77, 1e-6);
            }
        // Values less than half a level off come back as they were, in the rows there are, all of
        // them; the region stays.
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < width; ++x)
                plane.at(x, y) = static_cast<float>(before[y * step + x]) + (x % 2 ? 0.4f : -0.4f);
        std::fill(bytes.begin(), bytes.end(), 0);
        image.setImage32f(width, 5, 1, plane.values.data(), 0, 255);
        EXPECT_TRUE(image.data == bytes.data() && image.roiWidth == roiWidth &&
                    image.roiHeight == 3);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < step; ++x)
                ASSERT_EQ(bytes[y * step + x], x < width ? before[y * step + x] : 0);
    }
}

TEST(Image, SetImage32fScalesRoundsClampsAndWritesEachChannel) {
    constexpr float inf = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float big = std::numeric_limits<float>::max();
    const struct {
        float value, lo, hi;
        int level;
    } rows[] = {
        {0, 0, 255, 0},     {254.6f, 0, 255, 255}, {127.4f, 0, 255, 127}, {-3, 0, 255, 0},
        {300, 0, 255, 255}, {nan, 0, 255, 0},      {inf, 0, 255, 255},    {-inf, 0, 255, 0},
        {2, 1, 5, 64},      {0, -1, 1, 128},       {5, 5, 5, 0},          {9, 5, 5, 0},
        {1, 2, 0, 0},       {1, nan, 2, 0},        {1, 0, nan, 0},        {0, -inf, inf, 0},
        {inf, 0, inf, 255}, {7, 0, inf, 0},        {0, -big, big, 128},   {big, -big, big, 255},
    };
    for (const auto& [value, lo, hi, level] : rows)
        for (const int channels : {1, 2, 3, 4}) {
            FloatPlane plane(3, 2);
            std::fill(plane.values.begin(), plane.values.end(), value);
            HkImage image;
            image.setImage32f(3, 2, channels, plane.values.data(), lo, hi);
            ASSERT_EQ(image.channels, channels);
            for (int i = 0; i < 3 * channels; ++i)
                ASSERT_EQ(image.data[image.step + i], level) << value << " in " << lo << " " << hi;
        }
}

TEST(Image, FloatExchangeEqualsThePlainFormulaInDouble) {
    constexpr float inf = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float big = std::numeric_limits<float>::max();
    constexpr std::pair<float, float> ranges[] = {
        {0, 255}, {0, 1},    {0, 14.3f},       {-1.5f, 3},        {1e6f, 1e6f + 1}, {100, 101},
        {0, big}, {-big, 3}, {1e-40f, 2e-40f}, {-1e-31f, 1e-31f}, {-1e29f, 1e30f},  {3, 3}};
    std::mt19937 random(5);
    for (const auto& [lo, hi] : ranges)
        for (const int width : {1, 63, 64, 65, 127, 192, 200, 333}) {
            const double range = double{hi} - lo;
            FloatPlane plane(width, 2);
            for (int x = 0; x < width; ++x) {
                // A level, the middle between two, or a float or two beside it; and any value.
                const double middle = lo + (static_cast<int>(random() % 520) - 4) * range / 510;
                auto value = static_cast<float>(std::clamp(middle, -double{big}, double{big}));
                for (unsigned i = random() % 3; i > 0; --i)
                    value = std::nextafter(value, random() % 2 ? inf : -inf);
                plane.at(x, 0) = value;
                plane.at(x, 1) = static_cast<float>(lo + random() * range / 4294967295.0);
            }
            const float special[] = {nan, inf, -inf, -0.0f, lo, hi};
            for (const float value : special)
                plane.at(static_cast<int>(random() % width), 1) = value;

            HkImage image;
            image.setImage32f(width, 2, 1, plane.values.data(), lo, hi);
            for (int y = 0; y < 2; ++y)
                for (int x = 0; x < width; ++x) {
                    const float value = plane.at(x, y);
                    const double level = (value - double{lo}) * 255 / range + 0.5;
                    const int expected = !(hi > lo) || !(value > lo) ? 0
                                         : value >= hi               ? 255
                                                                     : static_cast<int>(level);
                    ASSERT_EQ(image.data[image.step * y + x], expected)
                        << value << " in " << lo << " " << hi << ", width " << width;
                }

            for (int x = width; x < image.step; ++x) ASSERT_EQ(image.data[x], 0);

            FloatPlane back(width, 2);
            ASSERT_TRUE(image.getBufferCopy32f(back.values.data(), lo, hi));
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(back.at(x, 1),
                          static_cast<float>(lo + range * image.data[image.step + x] / 255));
        }
}

TEST(Image, FloatExchangeRefusesWhatItCannotDo) {
    float floats[64] = {};
    HkImage empty;
    HkImage colour(3, 2, 3, nullptr, 4);
    HkImage grey(3, 2, 1, nullptr, 4);
    EXPECT_FALSE(empty.getBufferCopy32f(floats, 1, 2));
    EXPECT_FALSE(colour.getBufferCopy32f(floats, 1, 2));
    EXPECT_FALSE(grey.getBufferCopy32f(nullptr, 1, 2));
    EXPECT_EQ(std::count(std::begin(floats), std::end(floats), 0.f), 64);

    unsigned char* const pixels = grey.data;
    grey.data[0] = 9;
    grey.setImage32f(3, 2, 1, nullptr, 0, 1);
    grey.setImage32f(0, 2, 1, floats, 0, 1);
    grey.setImage32f(3, -2, 1, floats, 0, 1);
    grey.setImage32f(3, 2, 5, floats, 0, 1);
    grey.setImage32f(INT_MAX, INT_MAX, 4, floats, 0, 1);
    EXPECT_TRUE(grey.data == pixels && grey.data[0] == 9 && grey.width == 3 && grey.channels == 1);

    unsigned char caller[8] = {5, 5, 5, 5, 5, 5, 5, 5};
    HkImage shown(2, 2, 1, caller, 4);
    shown.setImage32f(3, 2, 2, floats, 0, 1);  // does not fit: the caller's rows are left alone
    EXPECT_TRUE(shown.data != caller && shown.roiWidth == 3 && shown.channels == 2);
    EXPECT_EQ(std::count(std::begin(caller), std::end(caller), 5), 8);
}

}  // namespace
