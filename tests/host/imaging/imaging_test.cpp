#include <gmock/gmock.h>
#include <sys/resource.h>

#include <QString>
#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <future>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "framework/contract/ImageProcessor/HkImageProcessor.h"
#include "tests/host/imaging/imaging_oracle.h"
#include "tests/kit/pixels.h"

namespace {

using oracle::Samples;

HkImageProcessor& processor() {
    return *HkImageProcessor::getInstance(nullptr);
}

struct Shape {
    int width = 1;
    int height = 1;
    int channels = 1;
    int roiWidth = 1;
    int roiHeight = 1;
    int padding = 0;  ///< bytes after each row
};

Samples samplesOf(const HkImage& image) {
    Samples result(image.roiWidth, image.roiHeight, image.channels);
    const std::vector<unsigned char> levels = pixels(image);
    result.values.assign(levels.begin(), levels.end());
    return result;
}

/// A picture on bytes of the test's own, at an odd address: rows with padding, and bytes before and
/// after, all of them noise that must survive.
class Canvas {
public:
    Canvas(const Shape& shape, unsigned seed) {
        image.step = shape.width * shape.channels + shape.padding;
        bytes.resize(kMargin + static_cast<std::size_t>(image.step) * shape.height + kMargin);
        std::mt19937 random(seed);
        // Flat stretches and full-range jumps as well as noise.
        const bool twoLevels = seed % 3 == 0;
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(twoLevels ? random() % 2 * 255 : random());
        image.data = bytes.data() + kMargin;
        image.channels = shape.channels;
        image.width = shape.width;
        image.height = shape.height;
        image.roiWidth = shape.roiWidth;
        image.roiHeight = shape.roiHeight;
        before = bytes;
    }

    bool untouched() const { return bytes == before; }

    /// Everything outside the region is as it was.
    bool onlyRegionTouched() const {
        std::vector<unsigned char> expected = before;
        for (int y = 0; y < image.roiHeight; ++y) {
            const std::size_t row = kMargin + static_cast<std::size_t>(image.step) * y;
            std::copy_n(&bytes[row], image.roiWidth * image.channels, &expected[row]);
        }
        return expected == bytes;
    }

    static constexpr std::size_t kMargin = 33;
    std::vector<unsigned char> bytes;
    std::vector<unsigned char> before;
    HkImage image;
};

struct Operation {
    std::string name;
    int leastChannels;
    int mostChannels;
    double tolerance;
    std::function<int(HkImage*, HkImage*)> run;
    std::function<Samples(const Samples&)> expected;
    bool hueFirst = false;  ///< the first channel is an angle: 255 and 0 are neighbours
};

/// Rounding to a level costs half a level, fixed-point coefficients up to as much again.
constexpr double kRounded = 1.0;

std::vector<Operation> operations() {
    using namespace oracle;
    HkImageProcessor* p = &processor();
    std::vector<Operation> list = {
        {"RGBtoYUV", 3, 4, kRounded, [p](auto s, auto d) { return p->RGBtoYUV(s, d); },
         [](const Samples& in) { return coloured(in, rgbToYuv); }},
        {"YUVtoRGB", 3, 4, kRounded, [p](auto s, auto d) { return p->YUVtoRGB(s, d); },
         [](const Samples& in) { return coloured(in, yuvToRgb); }},
        {"RGBtoHLS", 3, 4, kRounded, [p](auto s, auto d) { return p->RGBtoHLS(s, d); },
         [](const Samples& in) { return coloured(in, rgbToHls); }, true},
        {"invert", 1, 4, 0, [p](auto s, auto d) { return p->invert(s, d); }, inverted},
    };
    const auto add = [&list](const std::string& name, int value, int mostChannels, double tolerance,
                             const auto& run, const auto& expected) {
        list.push_back(
            {name + ' ' + std::to_string(value), 1, mostChannels, tolerance, run, expected});
    };
    for (const int n : {1, 2, 3, 4, 5, 16, 17, 40})
        add(
            "blur", n, 4, n > 4 && n <= 16 ? 3 : kRounded,
            [=](auto s, auto d) { return p->blur(s, n, d); },
            [=](const Samples& in) { return blurred(in, n); });
    for (const int n : {1, 2, 3, 4, 9, 98, 131, 32768})
        add(
            "maxFilter", n, 4, 0, [=](auto s, auto d) { return p->maxFilter(s, n, d); },
            [=](const Samples& in) {
                return largest(in, std::min(n / 2, 80), std::min((n - 1) / 2, 80));
            });
    for (const int n : {1, 2, 13, 55}) {
        add(
            "open", n, 4, 0, [=](auto s, auto d) { return p->open(s, n, d); },
            [=](const Samples& in) { return morphed(morphed(in, -n), n); });
        add(
            "close", n, 4, 0, [=](auto s, auto d) { return p->close(s, n, d); },
            [=](const Samples& in) { return morphed(morphed(in, n), -n); });
    }
    for (const int v : {0, 1, -1, 5, -13, 61, -61, 32768})
        add(
            "dilate_erode", v, 4, 0, [=](auto s, auto d) { return p->dilate_erode(s, v, d); },
            [=](const Samples& in) { return morphed(in, std::clamp(-v, -80, 80)); });
    for (const auto& [size, min] :
         {std::pair(5, 13.0), {-7, 0}, {0, 2.5}, {4, -3.25}, {11, 500}, {12, -500}, {301, 1}})
        add(
            "adaptTreshold", size, 1, 0,
            [=, n = size, m = min](auto s, auto d) { return p->adaptTreshold(s, d, n, m); },
            [n = size, m = min](const Samples& in) {
                return thresholded(in, std::max(n, 3) | 1, m);
            });
    return list;
}

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

class ImagingOperation : public testing::TestWithParam<Operation> {
protected:
    void expectResult(const Samples& actual, Samples expected, const Samples& source) {
        ASSERT_EQ(actual.values.size(), expected.values.size());
        for (std::size_t i = 0; i < expected.values.size(); ++i) {
            const int channel = static_cast<int>(i % source.channels);
            const bool isAlpha = source.channels == 4 && channel == 3;
            double error =
                std::abs(actual.values[i] - (isAlpha ? source.values[i] : expected.values[i]));
            if (GetParam().hueFirst && channel == 0) error = std::min(error, 256 - error);
            ASSERT_LE(error, isAlpha ? 0 : GetParam().tolerance)
                << "sample " << i << " of " << source.width << " x " << source.height << " x "
                << source.channels << ": " << actual.values[i] << ", expected "
                << expected.values[i];
        }
    }
};

TEST_P(ImagingOperation, EqualsThePlainLoopsAndStaysInItsRegion) {
    const Operation& operation = GetParam();
    enum Destination { Null, Itself, Empty, Other, SamePixels, OverlappingPixels, Count };
    std::mt19937 random(1);
    const auto upTo = [&](int n) { return 1 + static_cast<int>(random() % n); };
    for (unsigned trial = 0; trial < 30; ++trial) {
        Shape shape;
        // 80: beyond the reach from which windows are grown.
        shape.width = trial % 7 == 0 ? 80 : upTo(24);
        shape.height = trial % 7 == 1 ? 80 : upTo(24);
        shape.roiWidth = trial % 2 ? shape.width : upTo(shape.width);
        shape.roiHeight = trial % 2 ? shape.height : upTo(shape.height);
        shape.channels =
            operation.leastChannels +
            static_cast<int>(trial) % (operation.mostChannels - operation.leastChannels + 1);
        shape.padding = static_cast<int>(random() % 19);
        Canvas source(shape, trial);
        const Samples in = samplesOf(source.image);
        SCOPED_TRACE("trial " + std::to_string(trial));

        const auto kind = static_cast<Destination>(trial % Count);
        Shape larger = shape;
        larger.width += 3;
        larger.height += 2;
        Canvas other(larger, trial + 100);
        HkImage empty;
        HkImage sharing;
        sharing.data = source.image.data;
        sharing.step = source.image.step;
        sharing.channels = shape.channels;
        sharing.width = sharing.roiWidth = shape.roiWidth;
        sharing.height = sharing.roiHeight = shape.roiHeight;
        if (kind == OverlappingPixels) sharing.data -= shape.channels;  // one pixel to the left
        HkImage* const destinations[] = {nullptr,      &source.image, &empty,
                                         &other.image, &sharing,      &sharing};

        ASSERT_EQ(0, operation.run(&source.image, destinations[kind]));
        const HkImage& result = kind == Null ? source.image : *destinations[kind];
        expectResult(samplesOf(result), operation.expected(in), in);
        const bool isSeparate = kind == Empty || kind == Other;
        EXPECT_TRUE(isSeparate ? source.untouched()
                               : kind == OverlappingPixels || source.onlyRegionTouched());
        EXPECT_TRUE(other.onlyRegionTouched());
        EXPECT_EQ(empty.width, kind == Empty ? shape.roiWidth : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, ImagingOperation, testing::ValuesIn(operations()),
                         [](const testing::TestParamInfo<Operation>& parameter) {
                             std::string name = parameter.param.name;
                             std::replace(name.begin(), name.end(), ' ', '_');
                             std::replace(name.begin(), name.end(), '-', 'm');
                             return name;
                         });

TEST(Imaging, YuvThereAndBackIsWithinOneLevelAndGreyIsItsY) {
    const auto colours = noise(768, 256, 3, 1);
    HkImage yuv, back, grey;
    ASSERT_EQ(0, processor().RGBtoYUV(colours.get(), &yuv));
    ASSERT_EQ(0, processor().YUVtoRGB(&yuv, &back));
    ASSERT_EQ(0, processor().RGBtoGrayscale(colours.get(), &grey));
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 768; ++x) {
            ASSERT_EQ(sample(grey, x, y), sample(yuv, x, y));
            for (int c = 0; c < 3; ++c)
                ASSERT_LE(std::abs(sample(*colours, x, y, c) - sample(back, x, y, c)), 1);
        }
}

TEST(Imaging, GreyscaleInPlaceConvertsTheWholeImageAndKeepsTheRegion) {
    for (const int channels : {3, 4})
        for (const int width : {37, 64, 211}) {  // narrower and wider than any vector
            Canvas canvas({width, 70, channels, 11, 5, 7}, 4);
            HkImage& image = canvas.image;
            ASSERT_EQ(0, processor().RGBtoGrayscale(&image, nullptr));
            EXPECT_EQ(image.channels, 1);
            EXPECT_EQ(image.roiWidth, 11);
            EXPECT_EQ(image.roiHeight, 5);
            for (int y = 0; y < 70; ++y)
                for (int x = 0; x < width; ++x) {
                    const unsigned char* rgb = canvas.before.data() + Canvas::kMargin +
                                               y * (width * channels + 7) + x * channels;
                    ASSERT_NEAR(image.data[y * image.step + x],
                                oracle::lumaOf(rgb[0], rgb[1], rgb[2]), kRounded);
                }
            EXPECT_TRUE(std::equal(canvas.bytes.begin(), canvas.bytes.begin() + Canvas::kMargin,
                                   canvas.before.begin()));
            EXPECT_TRUE(std::equal(canvas.bytes.end() - Canvas::kMargin, canvas.bytes.end(),
                                   canvas.before.end() - Canvas::kMargin));
        }
}

TEST(Imaging, CopyChannelTouchesOneChannelOfTheRegion) {
    const auto expectCopy = [](Canvas& source, int from, Canvas& target, int to, HkImage* dst) {
        Samples expected = samplesOf(target.image);
        const Samples in = samplesOf(source.image);
        for (int y = 0; y < in.height; ++y)
            for (int x = 0; x < in.width; ++x) expected.at(x, y, to) = in.at(x, y, from);
        ASSERT_EQ(0, processor().copyChannel(&source.image, from, dst, to));
        EXPECT_EQ(samplesOf(target.image).values, expected.values);
        EXPECT_TRUE(target.onlyRegionTouched());
    };
    for (const int channels : {1, 2, 3, 4})
        for (const int others : {1, 2, 3, 4})
            for (const int width : {1, 5, 64, 65, 150}) {  // narrower and wider than any vector
                SCOPED_TRACE(std::to_string(channels) + " to " + std::to_string(others) + ", " +
                             std::to_string(width));
                Canvas source({width + 4, 7, channels, width, 4, 2}, 1);
                Canvas target({width + 7, 4, others, width, 4, 1}, 2);
                expectCopy(source, channels - 1, target, others / 2, &target.image);
                Canvas within({width + 4, 7, channels, width, 4, 2}, 3);
                expectCopy(within, 0, within, channels - 1, nullptr);
            }

    // A destination one pixel to the left within the same rows.
    Canvas canvas({70, 3, 3, 69, 3, 0}, 5);
    HkImage sharing(69, 3, 3, canvas.image.data, 210);
    canvas.image.data += 3;
    ASSERT_EQ(0, processor().copyChannel(&canvas.image, 0, &sharing, 2));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 69; ++x)
            ASSERT_EQ(
                sharing.data[210 * y + 3 * x + 2],
                canvas.before[Canvas::kMargin + static_cast<std::size_t>(210 * y + 3 * x) + 3]);
}

std::vector<std::string> messages;
void keepMessage(const QString& message) {
    messages.push_back(message.toStdString());
}

TEST(Imaging, BadArgumentsGiveANonZeroResultOneSentenceAndNoChange) {
    const Shape colour{8, 6, 3, 8, 6, 1};
    const Shape grey{8, 6, 1, 8, 6, 1};
    HkImageProcessor* p = HkImageProcessor::getInstance(keepMessage);
    const auto onEach = [&](const std::string& what, HkImage* src, HkImage* dst, int channels) {
        for (const Operation& operation : operations()) {
            if (channels < operation.leastChannels || channels > operation.mostChannels) continue;
            messages.clear();
            EXPECT_NE(0, operation.run(src, dst)) << operation.name << ", " << what;
            EXPECT_THAT(messages, testing::ElementsAre(testing::EndsWith("."))) << operation.name;
        }
    };

    const std::pair<const char*, std::function<void(HkImage&)>> damages[] = {
        {"no pixels", [](HkImage& i) { i.data = nullptr; }},
        {"step shorter than a row", [](HkImage& i) { i.step = i.width * i.channels - 1; }},
        {"negative step", [](HkImage& i) { i.step = -64; }},
        {"no channel", [](HkImage& i) { i.channels = 0; }},
        {"five channels", [](HkImage& i) { i.channels = 5; }},
        {"row length beyond int", [](HkImage& i) { i.width = i.roiWidth = INT_MAX; }},
        {"no rows", [](HkImage& i) { i.height = i.roiHeight = 0; }},
        {"region wider than the image", [](HkImage& i) { i.roiWidth = i.width + 1; }},
        {"no region", [](HkImage& i) { i.roiHeight = 0; }},
    };
    HkImage empty;
    for (const Shape& shape : {colour, grey}) {
        Canvas good(shape, 1);
        onEach("null source", nullptr, &good.image, shape.channels);
        onEach("empty source", &empty, &good.image, shape.channels);
        for (const auto& [what, damage] : damages) {
            Canvas bad(shape, 2);
            damage(bad.image);
            onEach(std::string(what) + " in the source", &bad.image, nullptr, shape.channels);
            onEach(std::string(what) + " in the destination", &good.image, &bad.image,
                   shape.channels);
            EXPECT_TRUE(bad.untouched());
        }
        Canvas narrow({8, 6, shape.channels, 7, 6, 0}, 3);
        Canvas otherChannels({8, 6, 4, 8, 6, 0}, 3);
        onEach("another region", &good.image, &narrow.image, shape.channels);
        onEach("other channels", &good.image, &otherChannels.image, shape.channels);
        EXPECT_TRUE(good.untouched() && narrow.untouched() && otherChannels.untouched());
    }

    Canvas one(grey, 4);
    Canvas two({8, 6, 2, 8, 6, 0}, 4);
    Canvas three(colour, 4);
    Canvas another(colour, 5);
    HkImage* g = &one.image;
    HkImage* c = &three.image;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<const char*, std::function<int()>> calls[] = {
        {"RGBtoYUV of grey", [&] { return p->RGBtoYUV(g, nullptr); }},
        {"YUVtoRGB of two channels", [&] { return p->YUVtoRGB(&two.image, nullptr); }},
        {"RGBtoHLS of grey", [&] { return p->RGBtoHLS(g, nullptr); }},
        {"RGBtoGrayscale of grey", [&] { return p->RGBtoGrayscale(g, nullptr); }},
        {"RGBtoGrayscale of null", [&] { return p->RGBtoGrayscale(nullptr, g); }},
        {"RGBtoGrayscale to colour", [&] { return p->RGBtoGrayscale(c, &another.image); }},
        {"adaptTreshold of colour", [&] { return p->adaptTreshold(c, nullptr, 5, 1); }},
        {"adaptTreshold too large", [&] { return p->adaptTreshold(g, nullptr, 2902, 1); }},
        {"adaptTreshold largest int", [&] { return p->adaptTreshold(g, nullptr, INT_MAX, 1); }},
        {"adaptTreshold NaN", [&] { return p->adaptTreshold(g, nullptr, 5, nan); }},
        {"blur 0", [&] { return p->blur(c, 0, nullptr); }},
        {"blur 4e9", [&] { return p->blur(c, 4000000000u, nullptr); }},
        {"blur 2^31 + 1", [&] { return p->blur(c, 2147483649u, nullptr); }},
        {"maxFilter 0", [&] { return p->maxFilter(c, 0, nullptr); }},
        {"maxFilter 4e9", [&] { return p->maxFilter(c, UINT_MAX, nullptr); }},
        {"open 0", [&] { return p->open(c, 0, nullptr); }},
        {"open 4e9", [&] { return p->open(c, UINT_MAX, nullptr); }},
        {"close 0", [&] { return p->close(c, 0, nullptr); }},
        {"close 4e9", [&] { return p->close(c, 4000000000u, nullptr); }},
        {"dilate_erode INT_MIN", [&] { return p->dilate_erode(c, INT_MIN, nullptr); }},
        {"dilate_erode INT_MAX", [&] { return p->dilate_erode(c, INT_MAX, nullptr); }},
        {"copyChannel from -1", [&] { return p->copyChannel(c, -1, g, 0); }},
        {"copyChannel from 3", [&] { return p->copyChannel(c, 3, g, 0); }},
        {"copyChannel to -1", [&] { return p->copyChannel(c, 0, g, -1); }},
        {"copyChannel to 1", [&] { return p->copyChannel(c, 0, g, 1); }},
        {"copyChannel to empty", [&] { return p->copyChannel(c, 0, &empty, 0); }},
        {"copyChannel from null", [&] { return p->copyChannel(nullptr, 0, g, 0); }},
    };
    for (const auto& [what, call] : calls) {
        messages.clear();
        EXPECT_NE(0, call()) << what;
        EXPECT_THAT(messages, testing::ElementsAre(testing::EndsWith("."))) << what;
    }
    EXPECT_TRUE(one.untouched() && two.untouched() && three.untouched());
    EXPECT_TRUE(empty.data == nullptr && empty.width == 0);

    HkImageProcessor::getInstance([](const QString&) { throw 1; });  // a receiver's own fault
    EXPECT_NE(0, p->blur(c, 0, nullptr));
    HkImageProcessor::getInstance(keepMessage);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they need the address space
TEST(ImagingDeathTest, LackOfMemoryIsAResult) {
    const auto run = [] {
        HkImage image(24000, 24000, 1, nullptr, 4);
        const rlimit limit{1000u << 20, 1000u << 20};
        const bool limited = image.data && setrlimit(RLIMIT_AS, &limit) == 0;
        HkImageProcessor::getInstance(keepMessage);
        const bool failed = processor().open(&image, 3, nullptr) != 0 &&
                            processor().blur(&image, 3, nullptr) != 0 && image.data[0] == 0;
        image.setImage32f(25000, 25000, 1, reinterpret_cast<float*>(image.data), 0, 1);
        std::exit(limited && failed && image.width == 24000 && messages.size() == 2 ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
#endif

TEST(Imaging, ThreadsWorkOnTheirOwnImages) {
    const auto work = [](unsigned seed) {
        Canvas canvas({61, 43, 3, 61, 43, 5}, seed);
        HkImage* image = &canvas.image;
        HkImageProcessor& p = processor();
        int failures = 0;
        for (int round = 0; round < 20; ++round) {
            failures += p.maxFilter(image, 3, nullptr) + p.blur(image, 4, nullptr);
            failures += p.RGBtoYUV(image, nullptr) + p.open(image, 2, nullptr);
            failures += p.YUVtoRGB(image, nullptr) + p.dilate_erode(image, -60, nullptr);
        }
        failures += p.RGBtoGrayscale(image, nullptr) + p.adaptTreshold(image, nullptr, 5, 3);
        EXPECT_EQ(failures, 0);
        return canvas.bytes;
    };
    std::vector<std::future<std::vector<unsigned char>>> results;
    for (unsigned i = 0; i < 4; ++i) results.push_back(std::async(std::launch::async, work, i));
    for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(results[i].get(), work(i));
}

}  // namespace
