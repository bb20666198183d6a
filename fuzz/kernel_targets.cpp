// Every kernel, in any of its builds, against the slow versions that the tests know.

#include "fuzz/targets.h"
#include "numeric/owned.h"
#include "tests/numeric/deconv_oracle.h"
#include "tests/numeric/flood_oracle.h"
#include "tests/numeric/oracles.h"

namespace fuzz {

namespace {

using namespace numeric::test;
using numeric::Success;

/// What every trial of a kernel begins with.
struct Setting {
    explicit Setting(Input& input, int mostWidth = 70, int mostHeight = 24)
        : width(input.number(1, mostWidth)),
          height(input.number(1, mostHeight)),
          bytePadding(input.number(0, 63)),
          byteOffset(input.number(0, 31)),
          slot(input.number(0, kSlots - 1)) {}

    Layout bytes() const { return {bytePadding, byteOffset}; }
    Layout floats() const { return {4 * bytePadding, 4 * byteOffset}; }

    const int width, height, bytePadding, byteOffset, slot;
};

/// Where the input ends its last bytes come again: a short one gives stripes, a long one pictures.
class Pattern {
public:
    explicit Pattern(Input& input) : m_bytes(input.rest()) {
        if (m_bytes.empty()) m_bytes.push_back('\0');
    }
    unsigned char next() { return static_cast<unsigned char>(m_bytes[m_next++ % m_bytes.size()]); }

    BytePlane bytes(const Setting& setting) {
        return plane<unsigned char>(setting, setting.bytes(), [this] { return next(); });
    }
    /// Small whole numbers, among them all that is odd about floats.
    FloatPlane floats(const Setting& setting) {
        return plane<float>(setting, setting.floats(), [this] {
            const float odd[] = {0.0F, -0.0F, kNaN, -kNaN, kInfinity, -kInfinity, 1e-42F, 3e38F};
            const unsigned char byte = next();
            return byte >= 248 ? odd[byte - 248] : static_cast<float>(byte) - 100;
        });
    }
    /// What can be calculated with.
    FloatPlane positiveFloats(const Setting& setting) {
        return plane<float>(setting, setting.floats(),
                            [this] { return static_cast<float>(next() + 1); });
    }

private:
    static constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    static constexpr float kInfinity = std::numeric_limits<float>::infinity();

    template <class Pixel, class Make>
    TestPlane<Pixel> plane(const Setting& setting, Layout layout, Make make) {
        TestPlane<Pixel> result(setting.width, setting.height, layout);
        result.set([&](int, int) { return make(); });
        return result;
    }

    std::string m_bytes;
    std::size_t m_next = 0;
};

template <class Pixel>
void expectPlane(const TestPlane<Pixel>& expected, const TestPlane<Pixel>& actual) {
    EXPECT_TRUE(samePixels(expected, actual));
    EXPECT_TRUE(actual.surroundingsIntact());
}

/// A kernel's weights, such that sums of them and their order against thresholds are exact.
std::vector<float> weights(Input& input, int size) {
    std::vector<float> kernel;
    for (int i = 0; i < size * size; ++i)
        kernel.push_back(static_cast<float>(2 * input.number(0, 60) + 1) / 256);
    kernel[static_cast<std::size_t>((size - 1) / 2 * (size + 1))] += 1;
    return kernel;
}

void floatElementwise(Input& input) {
    const Setting setting(input);
    const int kind = input.number(0, 3);
    const float scalar = input.number(0, 3) == 0 ? input.any<float>() : input.any<std::int8_t>();
    Pattern pattern(input);
    const FloatPlane source = pattern.floats(setting);
    FloatPlane actual = kind == 3 ? source : pattern.floats(setting), expected = actual;
    const SlotScope scope(setting.slot);
    const int w = setting.width, h = setting.height;
    if (kind == 0) {
        EXPECT_EQ(numeric::thresholdFloat(actual.data(), actual.step(), w, h, scalar, 7), Success);
        expected.set(
            [&](int x, int y) { return expected.at(x, y) < scalar ? 7.0F : expected.at(x, y); });
    } else if (kind == 1) {
        EXPECT_EQ(numeric::subtractScalar(source.data(), source.step(), scalar, actual.data(),
                                          actual.step(), w, h),
                  Success);
        expected.set([&](int x, int y) { return source.at(x, y) - scalar; });
    } else if (kind == 2) {
        EXPECT_EQ(
            numeric::subtract(source.data(), source.step(), actual.data(), actual.step(), w, h),
            Success);
        expected.set([&](int x, int y) { return expected.at(x, y) - source.at(x, y); });
    } else {
        float most = 0, wanted = -std::numeric_limits<float>::infinity();
        EXPECT_EQ(numeric::maximum(actual.data(), actual.step(), w, h, &most), Success);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) wanted = std::max(wanted, source.at(x, y));
        EXPECT_EQ(most, wanted);
        EXPECT_FALSE(most == 0 && std::signbit(most));
    }
    // Which NaN a difference of two is, the processor decides.
    const auto oneNaN = [](FloatPlane& plane) {
        plane.set([&](int x, int y) {
            return std::isnan(plane.at(x, y)) ? std::numeric_limits<float>::quiet_NaN()
                                              : plane.at(x, y);
        });
    };
    oneNaN(expected);
    EXPECT_TRUE(actual.surroundingsIntact());
    oneNaN(actual);
    expectPlane(expected, actual);
}

void byteElementwise(Input& input) {
    const Setting setting(input);
    const int kind = input.number(0, 3);
    const auto level = [&input] {
        return input.number(0, 3) == 0 ? input.any<int>() : input.number(0, 255);
    };
    const int low = level(), lowValue = level(), high = level(), highValue = level();
    Pattern pattern(input);
    const BytePlane source = pattern.bytes(setting);
    BytePlane actual = pattern.bytes(setting), expected = actual;
    const SlotScope scope(setting.slot);
    const int w = setting.width, h = setting.height;
    const auto byte = [](int value) {
        return static_cast<unsigned char>(std::clamp(value, 0, 255));
    };
    if (kind == 0) {
        numeric::thresholdAbove(actual.data(), actual.step(), w, h, high, highValue);
    } else if (kind == 1) {
        numeric::thresholdBelow(actual.data(), actual.step(), w, h, low, lowValue);
    } else if (kind == 2) {
        numeric::thresholdBothSides(actual.data(), actual.step(), w, h, low, lowValue, high,
                                    highValue);
    } else {
        numeric::bitwiseOr(source.data(), source.step(), actual.data(), actual.step(), w, h);
    }
    expected.set([&](int x, int y) -> unsigned char {
        const int pixel = expected.at(x, y);
        if (kind == 3) return static_cast<unsigned char>(pixel | source.at(x, y));
        if (kind != 0 && pixel < low) return byte(lowValue);
        if (kind != 1 && pixel > high) return byte(highValue);
        return byte(pixel);
    });
    expectPlane(expected, actual);
}

}  // namespace

void elementwise(Input input) {
    if (input.number(0, 1) == 0)
        floatElementwise(input);
    else
        byteElementwise(input);
}

void distance(Input input) {
    const Setting setting(input);
    const int zeroBelow = input.byte();
    BytePlane source = Pattern(input).bytes(setting);
    source.set([&](int x, int y) { return source.at(x, y) < zeroBelow ? 0 : source.at(x, y); });
    FloatPlane actual(setting.width, setting.height, setting.floats());
    TestScratch scratch(numeric::distanceTransformScratchSize, setting.width, setting.height,
                        setting.byteOffset);
    const SlotScope scope(setting.slot);
    EXPECT_EQ(numeric::distanceTransform(source.data(), source.step(), actual.data(), actual.step(),
                                         setting.width, setting.height, scratch.data()),
              Success);
    EXPECT_TRUE(scratch.surroundingsIntact());
    EXPECT_TRUE(actual.surroundingsIntact());
    expectDistances(distancesByTrying(source), actual);
}

void labels(Input input) {
    const Setting setting(input);
    const int connectivity = input.number(0, 1), zeroBelow = input.byte();
    const int smallest = input.number(1, 255), largest = input.number(smallest, 255);
    BytePlane marker = Pattern(input).bytes(setting);
    marker.set([&](int x, int y) { return marker.at(x, y) < zeroBelow ? 0 : marker.at(x, y); });
    TestPlane<int> areas(setting.width, setting.height);
    const int expected = floodFill(marker, connectivity, areas);
    TestScratch scratch(numeric::labelSeedsScratchSize, setting.width, setting.height,
                        setting.byteOffset);
    int count = -1;
    {
        const SlotScope scope(setting.slot);
        EXPECT_EQ(numeric::labelSeeds(marker.data(), marker.step(), setting.width, setting.height,
                                      smallest, largest, connectivity, &count, scratch.data()),
                  Success);
    }
    EXPECT_EQ(count, expected);
    EXPECT_TRUE(scratch.surroundingsIntact());
    EXPECT_TRUE(marker.surroundingsIntact());
    std::vector<int> labelOf(static_cast<std::size_t>(expected) + 1, 0);
    for (int y = 0; y < setting.height; ++y)
        for (int x = 0; x < setting.width; ++x) {
            const int area = areas.at(x, y), found = marker.at(x, y);
            int& label = labelOf[static_cast<std::size_t>(area)];
            if (area != 0 && label == 0) label = found;
            EXPECT_EQ(found, label);
            if (area == 0) continue;
            EXPECT_TRUE(smallest <= found && found <= largest);
            if (smallest + expected - 1 <= largest) {
                EXPECT_EQ(found, smallest + area - 1);
            }
        }
}

void watershed(Input input) {
    const Setting setting(input);
    const int norm = input.number(0, 3), flag = input.number(1, 2), border = input.number(0, 2);
    const int levels = input.number(1, 4), seedBelow = input.byte();
    Pattern pattern(input);
    BytePlane relief = pattern.bytes(setting), marker = pattern.bytes(setting);
    if (levels < 4)
        relief.set([&](int x, int y) {
            return static_cast<unsigned char>(relief.at(x, y) % levels * 127);
        });
    marker.set([&](int x, int y) { return marker.at(x, y) < seedBelow ? marker.at(x, y) : 0; });
    const BytePlane labels = FloodOracle(relief, marker, norm, flag == 1).labels();
    const BytePlane expected = border == 0 ? labels : withBorders(labels, border == 1);
    TestScratch scratch(numeric::watershedScratchSize, setting.width, setting.height,
                        setting.byteOffset);
    const SlotScope scope(setting.slot);
    EXPECT_EQ(
        numeric::watershed(relief.data(), relief.step(), marker.data(), marker.step(),
                           setting.width, setting.height, norm, flag | border << 6, scratch.data()),
        Success);
    EXPECT_TRUE(scratch.surroundingsIntact());
    expectPlane(expected, marker);
}

void peakStep(Input input) {
    const Setting setting(input);
    const int mode = input.number(0, 1);
    Pattern pattern(input);
    const FloatPlane bound = pattern.floats(setting);
    FloatPlane plane = pattern.floats(setting);
    const FloatPlane expected = raisedUntilStable(bound, plane, mode == 1);
    TestScratch scratch(numeric::peakStepScratchSize, setting.width, setting.height,
                        setting.byteOffset);
    const SlotScope scope(setting.slot);
    EXPECT_EQ(numeric::peakStep(bound.data(), bound.step(), plane.data(), plane.step(),
                                setting.width, setting.height, scratch.data(), mode),
              Success);
    EXPECT_TRUE(scratch.surroundingsIntact());
    expectPlane(expected, plane);
}

void deconvFFT(Input input) {
    const int order = input.number(0, 7), transformSize = 1 << order;
    const int kernelSize = input.number(1, std::min(transformSize, 5));
    const int most = transformSize - kernelSize + 1;
    const Setting setting(input, most, most);
    const float threshold = static_cast<float>(input.number(1, 60)) / 64;
    const std::vector<float> kernel = weights(input, kernelSize);
    const bool isOdd = input.number(0, 3) == 0;
    Pattern pattern(input);
    const FloatPlane source = isOdd ? pattern.floats(setting) : pattern.positiveFloats(setting);

    const auto run = [&](int slot) {
        const SlotScope scope(slot);
        numeric::DeconvFFTState* state = nullptr;
        EXPECT_EQ(numeric::deconvFFTInit(&state, kernel.data(), kernelSize, order, threshold),
                  Success);
        const numeric::OwnedDeconvFFT owned(state);
        FloatPlane result(setting.width, setting.height, setting.floats());
        EXPECT_EQ(numeric::deconvFFT(source.data(), source.step(), result.data(), result.step(),
                                     setting.width, setting.height, state),
                  Success);
        EXPECT_TRUE(result.surroundingsIntact());
        return result;
    };
    const FloatPlane actual = run(setting.slot);
    expectPlane(run(0), actual);
    const int mostSlowOrder = 4;
    if (isOdd || order > mostSlowOrder) return;
    const DirectDeconvolution oracle(source, kernel, kernelSize, transformSize, threshold);
    if (oracle.isNearThreshold()) return;
    const double tolerance = 1e-4 * oracle.sizeOfTerms();
    for (int x = 0; x < setting.width; ++x) {
        const std::vector<double> column = oracle.column(x);
        for (int y = 0; y < setting.height; ++y) {
            const double wanted = column[static_cast<std::size_t>(y)];
            const bool isCut =
                actual.at(x, y) == 0 && std::abs(wanted) <= double{threshold} + tolerance;
            EXPECT_TRUE(isCut || std::abs(actual.at(x, y) - wanted) <= tolerance)
                << actual.at(x, y) << " instead of " << wanted;
        }
    }
}

void deconvLR(Input input) {
    const Setting setting(input, 40, 12);
    const int kernelSize = input.number(1, 5), iterations = input.number(1, 8);
    const std::vector<float> kernel = weights(input, kernelSize);
    const bool isOdd = input.number(0, 3) == 0;
    const float threshold = 1e-4F;
    Pattern pattern(input);
    const FloatPlane source = isOdd ? pattern.floats(setting) : pattern.positiveFloats(setting);

    const auto run = [&](int slot) {
        const SlotScope scope(slot);
        const int margin = kernelSize - 1;
        numeric::DeconvLRState* state = nullptr;
        EXPECT_EQ(numeric::deconvLRInit(&state, kernel.data(), kernelSize,
                                        std::max(kernelSize, setting.width + margin),
                                        std::max(kernelSize, setting.height + margin), threshold),
                  Success);
        const numeric::OwnedDeconvLR owned(state);
        FloatPlane result(setting.width, setting.height, setting.floats());
        EXPECT_EQ(numeric::deconvLR(source.data(), source.step(), result.data(), result.step(),
                                    setting.width, setting.height, iterations, state),
                  Success);
        EXPECT_TRUE(result.surroundingsIntact());
        return result;
    };
    const FloatPlane actual = run(setting.slot);
    expectPlane(run(0), actual);
    if (isOdd) return;
    const FloatPlane expected = lucyRichardson(source, kernel, iterations, threshold);
    for (int y = 0; y < setting.height; ++y)
        for (int x = 0; x < setting.width; ++x) {
            const float wanted = expected.at(x, y);
            const bool isNearCut = std::abs(wanted) < 2 * threshold;
            EXPECT_NEAR(actual.at(x, y), wanted,
                        isNearCut ? 2 * threshold : 1e-4F * std::abs(wanted) + threshold);
        }
}

}  // namespace fuzz
