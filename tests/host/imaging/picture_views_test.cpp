#include "host/imaging/PictureViews.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "tests/kit/pixels.h"

namespace {

TEST(PictureViews, AreWhatTheirFormulasSay) {
    const auto a = noise(31, 18, 3, 1), b = noise(31, 18, 1, 2);
    const auto difference = differencePicture(*a, *b, 3);
    const auto reduced = reducedPicture(*b, 2);
    ASSERT_TRUE(difference && reduced);
    ASSERT_EQ(difference->channels, 3);
    for (int y = 0; y < 18; ++y)
        for (int x = 0; x < 31; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(sample(*difference, x, y, c),
                          std::min(255, 3 * std::abs(sample(*a, x, y, c) - sample(*b, x, y))));
    ASSERT_EQ(reduced->roiWidth, 15);
    ASSERT_EQ(reduced->roiHeight, 9);
    EXPECT_EQ(reducedPicture(*b, 1000)->roiWidth, 1);
    EXPECT_FALSE(differencePicture(*a, *reduced, 1)) << "sizes differ";
    const auto scaled = scaledPicture(*b, 2, 18);  // a column stands for fifteen and a half
    double left = sample(*b, 15, 7) / 2.0;
    for (int x = 0; x < 15; ++x) left += sample(*b, x, 7);
    EXPECT_NEAR(sample(*scaled, 0, 7), left / 15.5, 1);
    EXPECT_FALSE(scaledPicture(*b, 32, 18)) << "larger";

    const LevelCounts levels = levelCounts(*a);
    std::uint32_t pixels = 0;
    for (int level = 0; level < 256; ++level) pixels += levels.counts[2][level];
    EXPECT_EQ(pixels, 31u * 18);
    EXPECT_GT(levels.counts[1][sample(*a, 4, 5, 1)], 0u);

    const PixelValue pixel = pixelAt(*b, 30, 17);
    ASSERT_TRUE(pixel.isValid);
    const int grey = sample(*b, 30, 17);
    EXPECT_EQ(pixel.rgb, (std::array<int, 3>{grey, grey, grey}));
    EXPECT_EQ(pixel.yuv, (std::array<int, 3>{grey, 128, 128}));
    EXPECT_EQ(pixel.hls[1], grey);
    EXPECT_FALSE(pixelAt(*b, 31, 0).isValid);
    EXPECT_FALSE(pixelAt(*b, 0, -1).isValid);
}

TEST(PictureViews, TintsEachAreaInOneColourOfItsOwn) {
    HkImage areas(12, 5, 1, nullptr, 4), black(12, 5, 1, nullptr, 4);
    // Three areas; the second touches itself by a corner only.
    for (const auto& [x, y] : {std::pair(0, 0), {1, 0}, {4, 1}, {5, 2}, {9, 4}})
        sample(areas, x, y) = 255;
    const auto tinted = withAreasTinted(black, areas);
    ASSERT_TRUE(tinted);
    const auto colour = [&](int x, int y) {
        return std::array<int, 3>{sample(*tinted, x, y, 0), sample(*tinted, x, y, 1),
                                  sample(*tinted, x, y, 2)};
    };
    EXPECT_EQ(colour(0, 0), colour(1, 0));
    EXPECT_EQ(colour(4, 1), colour(5, 2));
    EXPECT_EQ((std::set{colour(0, 0), colour(4, 1), colour(9, 4), colour(7, 2)}).size(), 4u);
    EXPECT_EQ(colour(7, 2), (std::array<int, 3>{0, 0, 0}));
}

}  // namespace
