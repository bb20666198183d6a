#include <gtest/gtest.h>

#include <limits>

#include "deconv_oracle.h"
#include "numeric/owned.h"

namespace numeric {
namespace {

using namespace test;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

using State = OwnedDeconvFFT;

State makeState(const Kernel& kernel, int order, float threshold) {
    DeconvFFTState* state = nullptr;
    EXPECT_EQ(deconvFFTInit(&state, kernel.data(), sizeOf(kernel), order, threshold), Success);
    return State(state);
}

KernelStatus run(const FloatPlane& src, FloatPlane& dst, const State& state) {
    return deconvFFT(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height(),
                     state.get());
}

FloatPlane noise(int width, int height, unsigned seed = 1, Layout layout = {}) {
    std::mt19937 random(seed);
    FloatPlane plane(width, height, layout);
    return plane.set([&](int, int) { return static_cast<float>(random() % 25600) / 100; });
}

void expectDeconvolved(const FloatPlane& src, const Kernel& kernel, int order, float threshold,
                       const std::vector<int>& columns) {
    const State state = makeState(kernel, order, threshold);
    ASSERT_TRUE(state);
    FloatPlane dst(src.width(), src.height());
    ASSERT_EQ(run(src, dst, state), Success);

    const DirectDeconvolution oracle(src, kernel, sizeOf(kernel), 1 << order, threshold);
    std::vector<std::vector<double>> expected;
    double largest = 0;
    for (const int x : columns) {
        expected.push_back(oracle.column(x));
        for (const double value : expected.back()) largest = std::max(largest, std::abs(value));
    }
    const double tolerance = 1e-4 * largest;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        for (int y = 0; y < src.height(); ++y) {
            const double value = expected[i][y];
            const double actual = dst.at(columns[i], y);
            const bool isCut = actual == 0 && std::abs(value) <= threshold + tolerance;
            if (!isCut) {
                ASSERT_NEAR(actual, value, tolerance) << "at " << columns[i] << ", " << y;
                ASSERT_GT(std::abs(actual), threshold);
            }
        }
    }
}

std::vector<int> allColumns(int width) {
    std::vector<int> columns(width);
    for (int x = 0; x < width; ++x) columns[x] = x;
    return columns;
}

TEST(DeconvFFT, MatchesDirectSumsForEverySmallOrderKernelAndRegion) {
    for (int order = 0; order <= 5; ++order) {
        const int size = 1 << order;
        for (int k = 1; k <= 5 && k <= size; ++k) {
            const int most = size - k + 1;
            for (const int width : {1, 2, most / 2, most}) {
                for (const int height : {1, most / 3, most}) {
                    if (width < 1 || height < 1 || width > most || height > most) continue;
                    SCOPED_TRACE(::testing::Message() << "order " << order << ", kernel " << k
                                                      << ", " << width << " x " << height);
                    expectDeconvolved(noise(width, height), unsymmetricKernel(k), order, 0.05F,
                                      allColumns(width));
                }
            }
        }
    }
}

// One order for each way in which the transforms are put together of their passes.
TEST(DeconvFFT, MatchesDirectSumsForLargerOrders) {
    const struct {
        int order, kernelSize, width, height;
        float threshold;
    } cases[] = {
        {6, 3, 62, 62, 0.1F},  {6, 9, 33, 17, 0.02F}, {7, 3, 100, 126, 0.1F}, {7, 2, 127, 5, 0.05F},
        {8, 5, 252, 40, 0.2F}, {8, 4, 19, 253, 0.1F}, {9, 3, 510, 11, 0.1F},  {9, 1, 7, 200, 0.3F},
        {10, 3, 37, 30, 0.0F}, {11, 3, 9, 12, 0.1F},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "order " << c.order << ", kernel " << c.kernelSize);
        std::vector<int> columns = {0, c.width / 2, c.width - 1};
        if (c.width <= 64 && c.order < 9) columns = allColumns(c.width);
        expectDeconvolved(noise(c.width, c.height), unsymmetricKernel(c.kernelSize), c.order,
                          c.threshold, columns);
    }
}

// In one corner of the margin the kernel overlaps the region with 0.3 and this weight: a sum below
// the threshold counts as one.
TEST(DeconvFFT, MatchesDirectSumsWhereAnOverlapIsNegligible) {
    for (const float weight : {-0.3F, 0.19F, 0.21F})
        expectDeconvolved(noise(2, 2), {1, 2, 3, 4, weight, 0, 5, 0, 0.3F}, 3, 0.5F, {0, 1});
}

// The kernel and the thresholds with which frames are sharpened: corners dropped, then all but
// the centre.
TEST(DeconvFFT, MatchesDirectSumsForTheBinomialKernel) {
    const Kernel kernel = {0.0625F, 0.125F,  0.0625F, 0.125F, 0.25F,
                           0.125F,  0.0625F, 0.125F,  0.0625F};
    for (const float threshold : {0.02F, 0.1F, 0.2F, 0.3F})
        expectDeconvolved(noise(40, 51), kernel, 6, threshold, allColumns(40));
}

TEST(DeconvFFT, EverySlotGivesTheSameBitsAndKeepsToTheRegion) {
    const struct {
        int order, kernelSize, width, height;
    } cases[] = {{0, 1, 1, 1},   {3, 2, 7, 5},    {6, 3, 61, 62},  {7, 3, 126, 33},
                 {7, 5, 1, 124}, {8, 4, 253, 67}, {9, 3, 129, 65}, {10, 6, 300, 31}};
    for (const auto& c : cases) {
        const State state = makeState(unsymmetricKernel(c.kernelSize), c.order, 0.1F);
        const FloatPlane reference = noise(c.width, c.height, 7);
        FloatPlane expected(c.width, c.height);
        ASSERT_EQ(run(reference, expected, state), Success);
        forEachSlot([&] {
            // The state may come from another slot, and from the same one. A call leaves no
            // trace in it.
            const State own = makeState(unsymmetricKernel(c.kernelSize), c.order, 0.1F);
            const int most = (1 << c.order) - c.kernelSize + 1;
            FloatPlane nan(most, most);
            nan.fill(kNaN);
            ASSERT_EQ(run(nan, nan, own), Success);
            for (const Layout layout : layouts<float>()) {
                const FloatPlane src = noise(c.width, c.height, 7, layout);
                FloatPlane dst(c.width, c.height, {20, 12});
                ASSERT_EQ(run(src, dst, state), Success);
                ASSERT_TRUE(samePixels(expected, dst));
                FloatPlane inPlace = src;
                ASSERT_EQ(run(inPlace, inPlace, own), Success);
                ASSERT_TRUE(samePixels(expected, inPlace)) << "in place";
            }
        });
    }
}

TEST(DeconvFFT, NaNAndInfinitySpreadTheSameWayInEverySlot) {
    const State state = makeState(unsymmetricKernel(3), 7, 0.1F);
    const State nanThreshold = makeState(unsymmetricKernel(3), 7, kNaN);
    for (const float special : {kNaN, kInf, -kInf, 3e38F}) {
        for (const int row : {0, 17, 39}) {
            FloatPlane src = noise(50, 40);
            src.at(row, row) = special;
            FloatPlane expected(50, 40);
            ASSERT_EQ(run(src, expected, state), Success);
            // No frequency is left without the special value, and NaN is not above the threshold.
            if (special != 3e38F) {
                EXPECT_TRUE(samePixels(FloatPlane(50, 40), expected));
            }
            forEachSlot([&] {
                FloatPlane dst(50, 40);
                ASSERT_EQ(run(src, dst, state), Success);
                ASSERT_TRUE(samePixels(expected, dst)) << special;
                ASSERT_EQ(run(src, dst, nanThreshold), Success);
                ASSERT_TRUE(samePixels(FloatPlane(50, 40), dst));
            });
        }
    }
}

}  // namespace
}  // namespace numeric
