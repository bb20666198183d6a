#include <limits>
#include <utility>

#include "deconv_oracle.h"
#include "numeric/owned.h"

namespace numeric {
namespace {

using namespace test;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// The symmetric kernel of the deconvolution filter.
Kernel filterKernel() {
    Kernel kernel = {2,  7,  12, 7,  2,  7,  31, 52, 31, 7,  12, 52, 127,
                     52, 12, 7,  31, 52, 31, 7,  2,  7,  12, 7,  2};
    for (float& weight : kernel) weight /= 571;
    return kernel;
}

/// One kernel for each way through the code, and for each size up to 5.
std::vector<Kernel> kernels() {
    Kernel mirrored = filterKernel();  // symmetric in both axes, but not about the diagonal
    for (const int i : {1, 3, 21, 23}) mirrored[i] *= 1.5F;
    std::vector<Kernel> result = {filterKernel(), mirrored};
    for (int size = 1; size <= 5; ++size) result.push_back(unsymmetricKernel(size, 7));
    return result;
}

OwnedDeconvLR makeState(const Kernel& kernel, int maxWidth, int maxHeight, float threshold) {
    DeconvLRState* state = nullptr;
    EXPECT_EQ(deconvLRInit(&state, kernel.data(), sizeOf(kernel), maxWidth, maxHeight, threshold),
              Success);
    return OwnedDeconvLR(state);
}

FloatPlane run(const FloatPlane& src, int iterations, DeconvLRState* state, Layout layout = {}) {
    FloatPlane dst(src.width(), src.height(), layout);
    dst.fill(-1.0F);
    EXPECT_EQ(deconvLR(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height(),
                       iterations, state),
              Success);
    EXPECT_TRUE(dst.surroundingsIntact());
    return dst;
}

/// With a state that is just large enough.
FloatPlane run(const FloatPlane& src, const Kernel& kernel, int iterations, float threshold) {
    const int margin = sizeOf(kernel) - 1;
    const int k = sizeOf(kernel);
    const OwnedDeconvLR state = makeState(kernel, std::max(k, src.width() + margin),
                                          std::max(k, src.height() + margin), threshold);
    return run(src, iterations, state.get());
}

FloatPlane picture(int width, int height, Layout layout = {}) {
    FloatPlane plane(width, height, layout);
    return plane.set([](int x, int y) {
        return 100 +
               80 * std::sin(0.4F * static_cast<float>(x)) *
                   std::cos(0.3F * static_cast<float>(y)) +
               static_cast<float>((37 * x + 59 * y) % 23);
    });
}

TEST(DeconvLR, MatchesDirectConvolutionForEveryKernel) {
    const std::pair<int, int> sizes[] = {{1, 1},   {1, 6},   {6, 1},    {2, 3},  {7, 5},
                                         {12, 4},  {13, 23}, {33, 17},  {64, 9}, {123, 7},
                                         {124, 8}, {125, 9}, {129, 12}, {260, 6}};
    for (const Kernel& kernel : kernels())
        for (const auto& [width, height] : sizes)
            for (const int iterations : {1, 2, 3, 7, 13}) {
                SCOPED_TRACE(::testing::Message() << width << " x " << height << ", kernel size "
                                                  << sizeOf(kernel) << ", " << iterations);
                const FloatPlane src = picture(width, height);
                expectClose(lucyRichardson(src, kernel, iterations, 1e-4F),
                            run(src, kernel, iterations, 1e-4F));
            }
}

// One weight makes the difference: every one must be looked at before a kernel counts as symmetric.
TEST(DeconvLR, MatchesDirectConvolutionWithOneWeightOutOfLine) {
    const FloatPlane src = picture(12, 9);
    for (std::size_t i = 0; i < 25; ++i) {
        Kernel kernel = filterKernel();
        kernel[i] += 0.3F;
        SCOPED_TRACE("weight " + std::to_string(i));
        expectClose(lucyRichardson(src, kernel, 2, 1e-4F), run(src, kernel, 2, 1e-4F));
    }
}

// --- Every slot, any memory -----------------------------------------------------------------

FloatPlane withOddValues(FloatPlane plane) {
    const float odd[] = {kNaN, kInfinity, -kInfinity, 0, -0.0F, 1e-38F, 1e-42F, 3e38F, -5};
    int next = 0;
    for (int y = 0; y < plane.height(); ++y)
        for (int x = (7 * y) % 31; x < plane.width(); x += 31) plane.at(x, y) = odd[next++ % 9];
    return plane;
}

TEST(DeconvLR, EverySlotGivesTheSameBitsAndTouchesTheRegionOnly) {
    constexpr int kMaxSize = 400;
    int round = 0;
    const std::vector<Kernel> all = kernels();
    for (std::size_t n = 0; n < all.size(); ++n) {
        const Kernel& kernel = all[n];
        // One state for all of it: what an earlier run has left behind must not show.
        const OwnedDeconvLR state = makeState(kernel, kMaxSize, kMaxSize, 1e-4F);
        for (const int width : widths()) {
            // Only the folded iteration, the first kernel's, has a case for every width.
            if (n > 0 && width % 5 != static_cast<int>(n) % 5) continue;
            const int iterations = width % 16 == 0 ? 30 : 1 + ++round % 9;
            const Layout layout = layouts<float>()[round % 3];
            const FloatPlane clean = picture(width, 3 + width % 13, layout);
            for (const FloatPlane& src : {clean, withOddValues(clean)}) {
                const FloatPlane expected = run(src, kernel, iterations, 1e-4F);
                forEachSlot([&] {
                    ASSERT_TRUE(samePixels(expected, run(src, iterations, state.get(), layout)))
                        << "width " << width << ", " << iterations << " iterations, kernel size "
                        << sizeOf(kernel);
                });
            }
        }
    }
}

TEST(DeconvLR, WorksInPlace) {
    for (const Kernel& kernel : kernels())
        for (const int height : {1, 2, 7, 40}) {
            const OwnedDeconvLR state = makeState(kernel, 60, 60, 1e-4F);
            FloatPlane plane = picture(50, height);
            const FloatPlane expected = run(plane, kernel, 3, 1e-4F);
            EXPECT_EQ(deconvLR(plane.data(), plane.step(), plane.data(), plane.step(), 50, height,
                               3, state.get()),
                      Success);
            EXPECT_TRUE(samePixels(expected, plane));
        }
}

// --- Guards ---------------------------------------------------------------------------------

float single(float pixel, const Kernel& kernel, float threshold, int iterations = 1) {
    FloatPlane src(1, 1);
    src.fill(pixel);
    return run(src, kernel, iterations, threshold).at(0, 0);
}

TEST(DeconvLR, OneWeightLeavesWhatNoGuardStops) {
    const float above = std::nextafter(kVanished, 1.0F), next = std::nextafter(0.5F, 1.0F);
    struct {
        float pixel, threshold, expected;
    } const rows[] = {
        {3, 0.5F, 3},       {-3, 0.5F, -3},       {0.5F, 0.5F, 0},   {-0.5F, 0.5F, 0},
        {next, 0.5F, next}, {-next, 0.5F, -next}, {kNaN, 0.5F, 0},   {kInfinity, 0.5F, 0},
        {0, 0.5F, 0},       {-0.0F, 0, 0},        {kVanished, 0, 0}, {-kVanished, 0, 0},
        {above, 0, above},  {-above, 0, -above},  {1e-42F, 0, 0},    {3, kInfinity, 0},
        {3, kNaN, 0},       {kNaN, kNaN, 0},      {0, kNaN, 0},
    };
    forEachSlot([&] {
        for (const auto& row : rows)
            for (const int iterations : {1, 4, 30}) {
                const float result = single(row.pixel, {1}, row.threshold, iterations);
                EXPECT_EQ(result, row.expected) << row.pixel << " at " << row.threshold;
                EXPECT_TRUE(result != 0 || !std::signbit(result));
            }
    });
}

// The weight 2 lifts the blurred pixels above the threshold that the result then stops at.
TEST(DeconvLR, AResultAtTheThresholdIsZero) {
    const float next = std::nextafter(0.5F, 1.0F);
    FloatPlane src(37, 1), expected(37, 1);
    src.set([&](int x, int) { return x % 2 == 0 ? 0.5F : -next; });
    expected.set([&](int x, int) { return x % 2 == 0 ? 0 : -next; });
    forEachSlot([&] { EXPECT_TRUE(samePixels(expected, run(src, {2}, 2, 0.5F))); });
}

// With the weights (w 0 / 1 0) a region of one pixel p has the margin pixel p / w above it and
// zeros elsewhere. To its ratio, 1 / (w + 1 / w), belongs the correction w / (w + 1 / w).
TEST(DeconvLR, AVanishingCorrectionMakesTheEstimateZero) {
    for (const float pixel : {1e20F, -1e20F})
        forEachSlot([&] {
            EXPECT_EQ(single(pixel, {1e-8F, 0, 1, 0}, 0), 0.0F);
            EXPECT_NEAR(single(pixel, {1e-7F, 0, 1, 0}, 0) / (pixel * 1e-14F), 1, 1e-4);
        });
}

// The same two guards in the folded iteration, whose kernel cannot make the correction vanish from
// positive pixels: a blurred value at the threshold counts as none.
TEST(DeconvLR, ABlurredValueAtTheThresholdGivesNoRatio) {
    Kernel centre(25);
    centre[12] = 1;
    for (int y = 0; y < 3; ++y) {
        FloatPlane src(9, 3), expected(9, 3);
        const float next = std::nextafter(0.5F, 1.0F);
        src.set([&](int x, int row) { return row != y ? 0 : x % 3 == 0 ? 0.5F : next; });
        expected.set([&](int x, int row) { return row != y || x % 3 == 0 ? 0 : next; });
        forEachSlot([&] { EXPECT_TRUE(samePixels(expected, run(src, centre, 3, 0.5F))); });
    }
}

TEST(DeconvLR, ZerosStayZerosWithEveryKernel) {
    for (const Kernel& kernel : kernels())
        EXPECT_TRUE(samePixels(FloatPlane(40, 9), run(FloatPlane(40, 9), kernel, 6, 1e-4F)));
}

}  // namespace
}  // namespace numeric
