// Which operations of the host and which kernels each filter asks for, in which order and with
// which arguments.

#include <gmock/gmock.h>

#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "filters/degauss/FxImageFilterDegauss.h"
#include "filters/distance/FxImageFilterDistance.h"
#include "host/kernel/KernelStore.h"
#include "tests/filters/Recorded.h"
#include "tests/kit/ExpectedFilters.h"
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
    {"and that of luma", kSep, {5, false}, 2, "RGBtoYUV(in,null) newGrey copyChannel(in,0,new,0) ~in", kNew, "RGBtoYUV"},
    {"a failed inversion is overlooked", kSep, {1, true}, 3,
     "newGrey copyChannel(in,0,new,0) invert(new,null) ~in", kNew, "invert"},

    {"defaults", kBlur, {false, 1}, 3, "", kSame},
    {"enhance only", kBlur, {true, 1}, 3, "maxFilter(in,3,null)", kSame},
    {"maximum before blur", kBlur, {true, 13}, 3, "maxFilter(in,3,null) blur(in,13,null)", kSame},
    {"least blur", kBlur, {false, 2}, 1, "blur(in,2,null)", kSame},
    {"no blur", kBlur, {false, 0}, 3, "", kSame},
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
    {"far beyond", kOpen, {std::numeric_limits<int>::min()}, 3, "close(in,2147483648,null)", kSame},

    {"default", kDilate, {0}, 3, "", kSame},
    {"negative", kDilate, {-4}, 3, "dilate_erode(in,-4,null)", kSame},
    {"positive", kDilate, {4}, 2, "dilate_erode(in,4,null)", kSame},
    {"beyond the page", kDilate, {14}, 1, "dilate_erode(in,14,null)", kSame},
    {"beyond the other end", kDilate, {-99}, 1, "dilate_erode(in,-99,null)", kSame},
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
    image->roiWidth = 6;
    image->roiHeight = 5;  // nothing can be copied into a new picture with another region

    recorded::start(image.get());
    recorded::failAt(row.failing);
    EXPECT_EQ(host.process(image, (qint64(1) << 32) + 4), row.replaced);
    QString calls = QString::fromStdString(recorded::stop());
    calls.replace("HkImage(9,7,1,null,4)", "newGrey");
    const std::string values = "getKeyframesAt(4294967300)";
    EXPECT_EQ(calls.toStdString(), values + (*row.calls ? " " : "") + row.calls);
}

INSTANTIATE_TEST_SUITE_P(Filters, HostOperations, testing::ValuesIn(kRows));

// The two filters with kernels, over several frames

bool recordedKernelsOverlapped();

namespace {

/// The filter as it is linked into this executable, with the kernels that are recorded.
std::unique_ptr<HkImageFilter> recordedFilter(const FilterHost& host) {
    if (host.typeId == 2010) return std::make_unique<FxImageFilterDegauss>(host.objectId);
    return std::make_unique<FxImageFilterDistance>(host.objectId);
}

/// The weights of a kernel as they are written down.
QString joined(const std::vector<int>& weights, int sum) {
    std::string all;
    for (const int weight : weights)
        all += (all.empty() ? "" : "/") +
               recorded::Argument(static_cast<float>(weight) / static_cast<float>(sum)).text;
    return QString::fromStdString(all);
}

struct KernelFrame {
    int width, height, roiWidth, roiHeight, channels;
    int first, second;  ///< values of the two parameters after "Enabled"
    const char* calls;
};

/// Renders the frames with one filter object and compares what it asked for.
void expectCalls(const char* key, const std::vector<KernelFrame>& frames,
                 const char* failing = "") {
    FilterHost host(key);
    const auto filter = recordedFilter(host);
    std::vector<std::unique_ptr<HkImage>> images;
    for (const KernelFrame& frame : frames) {
        images.push_back(testImage(frame.width, frame.height, frame.channels));
        images.back()->channels = frame.channels;  // of an empty one, too
        images.back()->roiWidth = frame.roiWidth;
        images.back()->roiHeight = frame.roiHeight;
    }
    std::string expected;
    recorded::start(nullptr);
    recorded::failAt(failing);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        host.set(1, frames[i].first);
        host.set(2, frames[i].second);
        recorded::watch(images[i].get());
        process(*filter, images[i]);
        recorded::note("\n");
        expected += frames[i].calls + std::string(*frames[i].calls ? " \n " : "\n ");
    }
    QString calls = QString::fromStdString(recorded::stop()) + " ";
    calls.replace(joined({2,  7,  12, 7,  2,  7,  31, 52, 31, 7,  12, 52, 127,
                          52, 12, 7,  31, 52, 31, 7,  2,  7,  12, 7,  2},
                         571),
                  "lr");
    calls.replace(joined({1, 2, 1, 2, 4, 2, 1, 2, 1}, 16), "fft");
    calls.replace("HkImage(9,7,1,null,4)", "newGrey");
    calls.remove("getKeyframesAt(0) ");  // of the page, which follows the values
    EXPECT_EQ(calls.toStdString(), expected);
}

}  // namespace

TEST(KernelCalls, DeconvolutionMakesItsStateForNewSettingsOnly) {
    const int least = std::numeric_limits<int>::min();
    // clang-format off
    expectCalls(kDegauss, {
        {9, 7, 6, 5, 1, 2, 1, "initLR(lr,11x10,0.0001) plane(A,9x7) plane(B,9x7) getBufferCopy32f(in,A,0,255) LR(A,B,6x5,4) setImage32f(in,9,7,1,B,0,255)"},
        {9, 7, 6, 5, 1, 2, 1, "getBufferCopy32f(in,A,0,255) LR(A,B,6x5,4) setImage32f(in,9,7,1,B,0,255)"},
        {9, 7, 6, 5, 1, 15, 1, "~LR initLR(lr,11x10,0.0001) getBufferCopy32f(in,A,0,255) LR(A,B,6x5,30) setImage32f(in,9,7,1,B,0,255)"},
        {9, 7, 9, 7, 1, 15, 1, "~LR initLR(lr,14x12,0.0001) getBufferCopy32f(in,A,0,255) LR(A,B,9x7,30) setImage32f(in,9,7,1,B,0,255)"},
        {9, 7, 9, 7, 1, 15, 0, "~LR initFFT(fft,10,0.0133333) getBufferCopy32f(in,A,0,255) FFT(A,B,9x7) setImage32f(in,9,7,1,B,0,255)"},
        {9, 7, 9, 7, 1, 1, 0, "~FFT initFFT(fft,10,0.2) getBufferCopy32f(in,A,0,255) FFT(A,B,9x7) setImage32f(in,9,7,1,B,0,255)"},
        {9, 7, 9, 7, 1, 1, 7, "~FFT getBufferCopy32f(in,A,0,255) setImage32f(in,9,7,1,B,0,255)"},
        {9, 7, 9, 7, 1, 2, 0, "initFFT(fft,10,0.1) getBufferCopy32f(in,A,0,255) FFT(A,B,9x7) setImage32f(in,9,7,1,B,0,255)"},
        {1023, 2, 1023, 2, 1, 2, 0, "~FFT initFFT(fft,10,0.1) ~A ~B plane(C,1023x2) plane(D,1023x2) getBufferCopy32f(in,C,0,255) FFT(C,D,1023x2) setImage32f(in,1023,2,1,D,0,255)"},
        {1024, 2, 1024, 2, 1, 2, 0, "~FFT initFFT(fft,11,0.1) ~C ~D plane(E,1024x2) plane(F,1024x2) getBufferCopy32f(in,E,0,255) FFT(E,F,1024x2) setImage32f(in,1024,2,1,F,0,255)"},
        {1024, 2, 1024, 2, 1, least, 1, "~FFT initLR(lr,1029x7,0.0001) getBufferCopy32f(in,E,0,255) LR(E,F,1024x2,-1073741824) setImage32f(in,1024,2,1,F,0,255)"},
        {0, 0, 0, 0, 1, 2, 0, "~LR initFFT(fft,10,0.1) ~E ~F plane(G,0x0) plane(H,0x0) getBufferCopy32f(in,G,0,255) FFT(G,H,0x0) setImage32f(in,0,0,1,H,0,255)"},
        {9, 7, 9, 7, 2, 2, 1, ""},
    });
    for (const char* failing : {"", "RGBtoYUV", "copyChannel", "YUVtoRGB"})
        expectCalls(kDegauss, {
            {9, 7, 9, 7, 4, 3, 1, "newGrey RGBtoYUV(in,null) copyChannel(in,0,new,0) initLR(lr,14x12,0.0001) plane(A,9x7) plane(B,9x7) "
             "getBufferCopy32f(new,A,0,255) LR(A,B,9x7,6) setImage32f(new,9,7,1,B,0,255) copyChannel(new,0,in,0) YUVtoRGB(in,null) ~new"},
        }, failing);
    // clang-format on
}

TEST(KernelCalls, SeparatorKeepsItsPlanesAndScratch) {
    // clang-format off
    expectCalls(kDistance, {
        {9, 7, 6, 5, 1, 0, 12, "HkImage() plane(A,9x7) plane(B,9x7) bytes(C,100) distances(in,A,6x5,C) max(A,6x5) cut(A,6x5,2,0) minus(A,2,B,6x5) "
         "bytes(D,70) peaks(A,B,6x5,D,0) minus(B,A,6x5) max(A,6x5) setImage32f(new,9,7,1,A,0,5) maxFilter(new,3,null) label(new,6x5,2,254,1,C) "
         "invert(in,null) or(in,new,6x5) above(new,6x5,254,1) ~C bytes(E,200) watershed(in,new,6x5,3,130,E) outside(new,6x5,2,0,254,0) above(new,6x5,0,255) ~in"},
        {9, 7, 6, 5, 3, 1, 3, "RGBtoGrayscale(in,null) HkImage() distances(in,A,6x5,E) max(A,6x5) cut(A,6x5,8,0) minus(A,8,B,6x5) peaks(A,B,6x5,D,0) minus(B,A,6x5) "
         "max(A,6x5) setImage32f(new,9,7,1,A,0,5) maxFilter(new,3,null) label(new,6x5,2,254,1,E) invert(in,null) or(in,new,6x5) above(new,6x5,254,1) "
         "watershed(in,new,6x5,3,130,E) below(new,6x5,255,0) ~in"},
        {8, 7, 8, 7, 2, 2, 12, "HkImage() ~A ~B ~D ~E plane(F,8x7) plane(G,8x7) bytes(H,100) distances(in,F,8x7,H) max(F,8x7) cut(F,8x7,2,0) minus(F,2,G,8x7) "
         "bytes(I,70) peaks(F,G,8x7,I,0) minus(G,F,8x7) max(F,8x7) setImage32f(new,8,7,2,F,0,5) maxFilter(new,3,null) label(new,8x7,2,254,1,H) "
         "invert(in,null) or(in,new,8x7) above(new,8x7,254,1) ~H bytes(J,200) watershed(in,new,8x7,3,130,J) below(new,8x7,255,0) ~in"},
    });
    // clang-format on
}

TEST(KernelCalls, ThreadsTakeTurnsWithWhatAFilterKeeps) {
    for (const char* key : {kDegauss, kDistance}) {
        FilterHost host(key);
        const auto filter = recordedFilter(host);
        std::vector<std::thread> renderers;
        for (int i = 0; i < 3; ++i)
            renderers.emplace_back([&] {
                for (int frame = 0; frame < 20; ++frame) {
                    auto image = testImage(9, 7, 1);
                    process(*filter, image);
                }
            });
        for (std::thread& renderer : renderers) renderer.join();
        EXPECT_FALSE(recordedKernelsOverlapped()) << key;
    }
}

// The manipulators

namespace {

class ManipulatorCalls : public testing::TestWithParam<ExpectedFilter> {
protected:
    const ExpectedParameter& parameter(int index) const {
        return GetParam().parameters[static_cast<std::size_t>(index)];
    }
    /// The writes of values from parameter `first` on, in the filter's order.
    std::vector<std::string> writes(int first) const {
        std::vector<std::string> all;
        for (const int index : GetParam().writeOrder) {
            const auto& [name, type, kind, value] = parameter(index);
            const bool isOffThePage = first > 0 && std::string(name) == "Size";
            if (index >= first)
                all.push_back(recorded::call(
                    "setValue", {name, value.typeName(),
                                 isOffThePage ? "11" : value.toString().toStdString()}));
        }
        return all;
    }
    static std::string joined(const std::vector<std::string>& calls) {
        std::string all;
        for (const std::string& one : calls) all += (all.empty() ? "" : " ") + one;
        return all;
    }
};

}  // namespace

TEST_P(ManipulatorCalls, RegisterTypeParametersAndDefaults) {
    const int id = GetParam().typeId, count = static_cast<int>(GetParam().parameters.size());
    std::vector<std::string> expected = {"base", recorded::call("registerFilterType", {id})};
    const auto recordedCalls = [](const char* failing, const auto& work) {
        recorded::start(nullptr);
        recorded::failAt(failing);
        work();
        return recorded::stop();
    };
    const auto manipulator = makeManipulator(GetParam().key);
    const auto init = [&] { manipulator->initManipulator(nullptr); };
    EXPECT_EQ(recordedCalls("registerFilterType", init), joined(expected));
    EXPECT_FALSE(KernelStore::isRegistered(*manipulator));

    for (int i = 0; i < count; ++i)
        expected.push_back(
            recorded::call("addParamDescr",
                           {i, parameter(i).name, int(parameter(i).type), int(parameter(i).kind)}));
    expected.push_back(recorded::call("registerDataDescriptor", {id, count, id}));
    const std::vector<std::string> all = writes(0);
    EXPECT_EQ(recordedCalls("", init), joined(expected) + " " + joined(all));
    EXPECT_TRUE(KernelStore::isRegistered(*manipulator));

    const auto* descr = HkFXKernelData::getInstance()->getDataDescriptor(id);
    for (std::size_t i = 0; i < all.size(); ++i) {
        HkParamKeyframeVector values = descr->createKeyframeVector();
        const auto fill = [&] { EXPECT_FALSE(manipulator->fillDefaultValues(descr, values, 0)); };
        EXPECT_EQ(recordedCalls(parameter(GetParam().writeOrder[i]).name, fill),
                  joined({all.begin(), all.begin() + static_cast<std::ptrdiff_t>(i) + 1}));
    }
}

TEST_P(ManipulatorCalls, CommitAnEditAndShowTheFrame) {
    FilterHost host(GetParam().key);
    const quint32 frame = 0xf0000000u;  // must not turn negative on its way to 64 bits
    KernelStore::instance().setCurrentFrame(frame);
    auto* object = HkFXKernelData::getInstance()->getObject(host.typeId, host.objectId);
    for (const bool animated : {false, true}) {
        object->animated = animated;
        recorded::start(nullptr);
        host.manipulator->commitGuiChanges(host.objectId);
        host.manipulator->updateGuiFromKernel(host.objectId, object);
        const qint64 tag = animated ? qint64(frame) : -1;
        EXPECT_EQ(recorded::stop(),
                  joined(writes(1)) + " " +
                      recorded::call("CmdChangeObject", {host.typeId, tag, GetParam().merges}) +
                      " push " + recorded::call("getKeyframesAt", {qint64(frame)}));
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, ManipulatorCalls, testing::ValuesIn(expectedFilters()),
                         [](const auto& row) { return std::string(row.param.className); });

// New images

TEST(NewImages, HoldNothingOfFramesBefore) {
    for (const char* filter : {kDistance, kDegauss}) {
        FilterHost host(filter);
        host.set(filter == kDistance ? 2 : 1, 15);
        const auto renderedBy = [](HkImageFilter& used, int roiWidth, int roiHeight) {
            auto image = testImage(40, 30, 1);
            image->roiWidth = roiWidth;
            image->roiHeight = roiHeight;
            process(used, image);
            image->roiWidth = image->width;  // outside the region, too
            image->roiHeight = image->height;
            return pixels(*image);
        };
        const auto make = [&] {
            return std::unique_ptr<HkImageFilter>(
                host.manipulator->createImageFilter(host.objectId));
        };
        const auto used = make();
        constexpr int kRegions[][2] = {{40, 30}, {25, 30}, {40, 12}, {25, 30}, {24, 11}, {40, 30}};
        for (const auto& [width, height] : kRegions)
            EXPECT_EQ(renderedBy(*used, width, height), renderedBy(*make(), width, height))
                << filter << " " << width << " x " << height;
    }
}
