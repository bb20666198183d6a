#include <gtest/gtest.h>

#include "host/imaging/PictureDifference.h"
#include "host/imaging/PictureViews.h"
#include "tests/kit/pixels.h"

// The oracle walks the samples one by one in another order and adds up in floating point.

namespace {

/// A picture whose region is smaller than what is allocated, with noise everywhere.
std::unique_ptr<HkImage> part(int channels, unsigned seed, int roiWidth = 31, int roiHeight = 17) {
    auto image = noise(40, 20, channels, seed);
    image->roiWidth = roiWidth;
    image->roiHeight = roiHeight;
    return image;
}

TEST(PictureDifference, AgreesWithAnotherWayOfCounting) {
    for (int channels = 1; channels <= 4; ++channels) {
        const auto a = part(channels, 1), b = part(channels, 2);
        for (int x = 0; x < 31; x += 3)  // some pixels are equal, and some in one channel only
            for (int y = 0; y < 17; ++y)
                for (int c = y % 2; c < channels; ++c) sample(*b, x, y, c) = sample(*a, x, y, c);
        double squares = 0;
        std::array<int, 4> largest = {};
        int changed = 0;
        for (int x = 30; x >= 0; --x)
            for (int y = 16; y >= 0; --y) {
                int different = 0;
                for (int c = 0; c < channels; ++c) {
                    const double d = sample(*a, x, y, c) - sample(*b, x, y, c);
                    squares += d * d;
                    largest[c] = std::max(largest[c], static_cast<int>(std::abs(d)));
                    different += d != 0;
                }
                changed += different > 0;
            }
        const auto found = differenceOf(*a, *b);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->changedPixels, changed);
        EXPECT_EQ(found->pixels, 31 * 17);
        EXPECT_EQ(found->largest, largest);
        const double rmse = std::sqrt(squares / (31 * 17 * channels));
        EXPECT_NEAR(found->psnr(), 20 * std::log10(255 / rmse), 1e-9) << channels;

        const auto shown = differencePicture(*a, *b, 3);
        ASSERT_TRUE(shown);
        ASSERT_EQ(shown->channels, channels <= 2 ? 1 : 3);
        for (int x = 0; x < 31; ++x)
            for (int y = 0; y < 17; ++y)
                for (int c = 0; c < shown->channels; ++c) {
                    int d = std::abs(sample(*a, x, y, c) - sample(*b, x, y, c));
                    if (channels % 2 == 0)
                        d = std::max(d, std::abs(sample(*a, x, y, channels - 1) -
                                                 sample(*b, x, y, channels - 1)));
                    ASSERT_EQ(sample(*shown, x, y, c), std::min(255, 3 * d)) << x << ' ' << y;
                }
    }
}

TEST(PictureDifference, EqualRegionsAreInfinitelyAlikeAndOthersAreRefused) {
    const auto a = part(3, 1), b = part(3, 1);
    sample(*b, 31, 5, 0) ^= 255;  // outside the region
    EXPECT_TRUE(differenceOf(*a, *b)->isNone());
    EXPECT_EQ(differenceOf(*a, *b)->psnr(), std::numeric_limits<double>::infinity());
    sample(*b, 30, 16, 2) ^= 1;
    EXPECT_EQ(differenceOf(*a, *b)->changedPixels, 1);
    EXPECT_NEAR(differenceOf(*a, *b)->psnr(), 10 * std::log10(255. * 255 * 31 * 17 * 3), 1e-9);

    const HkImage none;
    for (const HkImage* other : {part(4, 1).release(), part(3, 1, 30).release(),
                                 part(3, 1, 31, 16).release(), new HkImage}) {
        const std::unique_ptr<const HkImage> owned(other);
        EXPECT_FALSE(differenceOf(*a, *other));
        EXPECT_EQ(differencePicture(*a, *other, 1) != nullptr, other->channels == 4)
            << "only sizes must agree";
    }
}

}  // namespace
