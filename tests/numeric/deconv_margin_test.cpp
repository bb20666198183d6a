#include "numeric/deconvolution/deconv_margin.h"

#include <gtest/gtest.h>

#include <memory>

#include "deconv_oracle.h"

namespace numeric {
namespace {

using namespace test;

struct FreeAligned {
    void operator()(float* block) const { freeAligned(block); }
};
using KernelCopy = std::unique_ptr<float, FreeAligned>;

FloatPlane ramp(int width, int height) {
    FloatPlane plane(width, height);
    return plane.set([](int x, int y) { return 1.0F + static_cast<float>(7 * x + 31 * y); });
}

std::vector<float> extended(const FloatPlane& region, const std::vector<float>& kernel, int size,
                            float threshold) {
    const KernelCopy copy(copyKernelWithSums(kernel.data(), size));
    const DeconvMargin margin(copy.get(), size, threshold, region.width(), region.height());
    std::vector<float> result(margin.extendedWidth() * margin.extendedHeight());
    for (int y = 0; y < margin.extendedHeight(); ++y)
        margin.extendRow(region.row(margin.nearestRow(y)), y,
                         result.data() + y * margin.extendedWidth());
    return result;
}

TEST(DeconvMargin, MatchesDirectSumsForEverySizeOfKernelAndRegion) {
    for (int size = 1; size <= 7; ++size) {
        const std::vector<float> kernel = unsymmetricKernel(size);
        for (int width = 1; width <= 12; ++width) {
            for (int height = 1; height <= 9; ++height) {
                const FloatPlane region = ramp(width, height);
                const auto expected = extendedRegion(region, kernel, size, 0.01F);
                const auto actual = extended(region, kernel, size, 0.01F);
                ASSERT_EQ(actual.size(), expected.size());
                for (std::size_t i = 0; i < actual.size(); ++i)
                    ASSERT_NEAR(actual[i], expected[i], 1e-5 * std::abs(expected[i]))
                        << size << ": " << width << " x " << height << " at " << i;
            }
        }
    }
}

TEST(DeconvMargin, CornerOfTheBinomialKernel) {
    const std::vector<float> kernel = {0.0625F, 0.125F,  0.0625F, 0.125F, 0.25F,
                                       0.125F,  0.0625F, 0.125F,  0.0625F};
    const auto actual = extended(ramp(4, 3), kernel, 3, 0.1F);
    EXPECT_FLOAT_EQ(actual[0], 1.0F * 0.0625F / 0.5625F);
    // One step along the edge the whole width of the kernel counts on both sides of the fraction.
    EXPECT_FLOAT_EQ(actual[2], 8.0F * 0.25F / 0.75F);
}

TEST(DeconvMargin, ANegligibleDenominatorCountsAsOne) {
    const std::vector<float> kernel = {1, 2, 3, 4, 0, 0, 5, 0, 0};
    const auto actual = extended(ramp(2, 2), kernel, 3, 0.5F);
    EXPECT_EQ(actual[0], 0.0F);  // top left: 0 / (0 + 0 + 0 + 0 -> 1)
    EXPECT_EQ(actual[4 * 3 + 3], ramp(2, 2).at(1, 1) * 1.0F / (1 + 2 + 4 + 0));
}

TEST(DeconvMargin, AKernelOfOneWeightHasNoMargin) {
    const auto actual = extended(ramp(5, 4), {0.3F}, 1, 0.0F);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(actual[i], ramp(5, 4).at(i % 5, i / 5));
}

}  // namespace
}  // namespace numeric
