// Which operations of the host each filter asks for, in which order and with which arguments.

#include <gmock/gmock.h>

#include <QRegularExpression>
#include <string>
#include <vector>

#include "host/kernel/KernelStore.h"
#include "tests/filters/RecordedImaging.h"
#include "tests/kit/FilterHost.h"

namespace {

struct Row {
    const char* what;
    const char* filter;
    std::vector<QVariant> values;  ///< of the parameters after "Enabled"
    int channels;
    const char* calls;  ///< "newGrey" is a new one-channel picture of the frame's size
    bool replaced;      ///< a new picture takes the place of the frame
    const char* failing = "";
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.filter << ": " << row.what;
}

class HostOperations : public testing::TestWithParam<Row> {};

const bool kNew = true, kSame = false;
const char kSep[] = "Channel separation";
const char kBlur[] = "Blur and enhance";
const char kThreshold[] = "Adaptive threshold";
const char kOpen[] = "Open_Close";
const char kDilate[] = "Dilate_Erode";
const char kDegauss[] = "Degauss";
const char kDistance[] = "Object separator";

// clang-format off
const Row kRows[] = {
    {"red", kSep, {1, false}, 3, "newGrey copyChannel(in,0,new,0) ~in", kNew},
    {"green", kSep, {2, false}, 3, "newGrey copyChannel(in,1,new,0) ~in", kNew},
    {"blue of RGBA", kSep, {3, false}, 4, "newGrey copyChannel(in,2,new,0) ~in", kNew},
    {"hue", kSep, {4, false}, 3, "RGBtoHLS(in,null) newGrey copyChannel(in,0,new,0) ~in", kNew},
    {"luma, inverted afterwards", kSep, {5, true}, 3,
     "RGBtoYUV(in,null) newGrey copyChannel(in,0,new,0) invert(new,null) ~in", kNew},
    {"saturation", kSep, {6, false}, 3, "RGBtoHLS(in,null) newGrey copyChannel(in,2,new,0) ~in", kNew},
    {"no channel", kSep, {0, true}, 3, "", kSame},
    {"unknown channel", kSep, {7, true}, 3, "", kSame},
    {"grey frame", kSep, {5, false}, 1, "", kSame},
    {"grey frame inverted", kSep, {0, true}, 1, "invert(in,null)", kSame},
    {"a failed copy gives the converted frame back", kSep, {4, true}, 3,
     "RGBtoHLS(in,null) newGrey copyChannel(in,0,new,0) ~new", kSame, "copyChannel"},
    {"a failed conversion is overlooked", kSep, {6, false}, 3,
     "RGBtoHLS(in,null) newGrey copyChannel(in,2,new,0) ~in", kNew, "RGBtoHLS"},
    {"a failed inversion is overlooked", kSep, {1, true}, 3,
     "newGrey copyChannel(in,0,new,0) invert(new,null) ~in", kNew, "invert"},

    {"defaults", kBlur, {false, 1}, 3, "", kSame},
    {"enhance only", kBlur, {true, 1}, 3, "maxFilter(in,3,null)", kSame},
    {"maximum before blur", kBlur, {true, 13}, 3, "maxFilter(in,3,null) blur(in,13,null)", kSame},
    {"least blur", kBlur, {false, 2}, 1, "blur(in,2,null)", kSame},
    {"negative blur", kBlur, {false, -3}, 3, "", kSame},
    {"a failure does not stop the next", kBlur, {true, 5}, 3,
     "maxFilter(in,3,null) blur(in,5,null)", kSame, "maxFilter"},

    {"the default minimum is rounded", kThreshold, {5, 12.8}, 1, "adaptTreshold(in,null,5,13)", kSame},
    {"the page's greatest", kThreshold, {101, 25.5}, 3,
     "RGBtoGrayscale(in,null) adaptTreshold(in,null,101,26)", kSame},
    {"low 8 bits of both", kThreshold, {257, 300.2}, 1, "adaptTreshold(in,null,1,44)", kSame},
    {"negative values", kThreshold, {-1, -1.0}, 1, "adaptTreshold(in,null,255,255)", kSame},
    {"a failed conversion is overlooked", kThreshold, {11, 3.0}, 3,
     "RGBtoGrayscale(in,null) adaptTreshold(in,null,11,3)", kSame, "RGBtoGrayscale"},

    {"default", kOpen, {0}, 3, "", kSame},
    {"positive opens", kOpen, {5}, 3, "open(in,5,null)", kSame},
    {"negative closes", kOpen, {-13}, 1, "close(in,13,null)", kSame},
    {"beyond the page", kOpen, {14}, 3, "open(in,14,null)", kSame},

    {"default", kDilate, {0}, 3, "", kSame},
    {"negative", kDilate, {-4}, 3, "dilate_erode(in,-4,null)", kSame},
    {"positive", kDilate, {4}, 1, "dilate_erode(in,4,null)", kSame},

    {"luma of a colour frame", kDegauss, {2, 1}, 3,
     "newGrey RGBtoYUV(in,null) copyChannel(in,0,new,0) getBufferCopy32f(new,plane,0,255) "
     "setImage32f(new,9,7,1,plane,0,255) copyChannel(new,0,in,0) YUVtoRGB(in,null) ~new", kSame},
    {"grey frame", kDegauss, {15, 0}, 1,
     "getBufferCopy32f(in,plane,0,255) setImage32f(in,9,7,1,plane,0,255)", kSame},
    {"two channels", kDegauss, {2, 1}, 2, "", kSame},

    // The range of the float plane ends at the strongest peak.
    {"grey frame", kDistance, {0, 10}, 1,
     "HkImage() setImage32f(new,9,7,1,plane,0,peak) maxFilter(new,3,null) invert(in,null) ~in", kNew},
    {"colour frame", kDistance, {1, 10}, 3,
     "RGBtoGrayscale(in,null) HkImage() setImage32f(new,9,7,1,plane,0,peak) maxFilter(new,3,null) "
     "invert(in,null) ~in", kNew},
};
// clang-format on

}  // namespace

TEST_P(HostOperations, AreAskedForInOrder) {
    const Row& row = GetParam();
    FilterHost host(row.filter);
    host.set(0, 2);  // any number but 0 enables
    for (std::size_t i = 0; i < row.values.size(); ++i)
        host.set(static_cast<int>(i) + 1, row.values[i]);
    auto image = testImage(9, 7, row.channels);

    recorded::start(image.get());
    recorded::failAt(row.failing);
    EXPECT_EQ(host.process(image), row.replaced);
    QString calls = QString::fromStdString(recorded::stop());
    calls.replace("HkImage(9,7,1,null,4)", "newGrey");
    calls.replace(QRegularExpression("(new,9,7,1,plane,0,)(?!255)[0-9.e+]+"), "\\1peak");
    EXPECT_EQ(calls.toStdString(), row.calls);
}

INSTANTIATE_TEST_SUITE_P(Filters, HostOperations, testing::ValuesIn(kRows));

TEST(AnimatedInstance, IsRenderedWithTheValuesOfTheFrame) {
    FilterHost host(kBlur);
    KernelStore& store = KernelStore::instance();
    const qint64 late = (qint64(1) << 32) + 4;
    store.setAnimated(host.objectId, true);
    store.setKey(host.objectId, 2, 4, 3, true);
    store.setKey(host.objectId, 2, late, 9, true);
    auto image = testImage(9, 7, 1);
    recorded::start(image.get());
    for (const qint64 frame : {qint64(4), late}) host.process(image, frame);
    EXPECT_EQ(recorded::stop(), "blur(in,3,null) blur(in,9,null)");
}

TEST(NewImages, TakeOverTheRegionOfTheFrame) {
    for (const char* filter : {kSep, kDistance}) {
        FilterHost host(filter);
        auto image = testImage(9, 7, 3);
        image->roiWidth = 6;
        image->roiHeight = 5;
        EXPECT_TRUE(host.process(image)) << filter;
        EXPECT_EQ(image->channels, 1) << filter;
        EXPECT_EQ(image->width, 9) << filter;
        EXPECT_EQ(image->height, 7) << filter;
        EXPECT_EQ(image->roiWidth, 6) << filter;
        EXPECT_EQ(image->roiHeight, 5) << filter;
    }
}

TEST(NewImages, HoldNothingOfFramesBefore) {
    FilterHost host(kDistance);
    host.set(2, 80);
    const auto renderedBy = [](HkImageFilter& filter, int roiWidth, int roiHeight) {
        auto image = testImage(40, 30, 1);
        image->roiWidth = roiWidth;
        image->roiHeight = roiHeight;
        process(filter, image);
        image->roiWidth = image->width;  // outside the region, too
        image->roiHeight = image->height;
        return pixels(*image);
    };
    const auto make = [&] {
        return std::unique_ptr<HkImageFilter>(host.manipulator->createImageFilter(host.objectId));
    };
    const auto used = make();
    constexpr int kRegions[][2] = {{40, 30}, {25, 30}, {40, 12}, {25, 30}, {24, 11}, {40, 30}};
    for (const auto& [width, height] : kRegions)
        EXPECT_EQ(renderedBy(*used, width, height), renderedBy(*make(), width, height))
            << width << " x " << height;
}
