#include "host/document/FilterAdvice.h"

#include <cmath>
#include <cstdio>
#include <utility>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/ImageProcessor/HkImageProcessor.h"

namespace document {
namespace {

const char* const kDeconvolution = "Degauss";
const char* const kSeparator = "Object separator";
const char* const kOpenClose = "Open_Close";
const char* const kThreshold = "Adaptive threshold";
const char* const kDilateErode = "Dilate_Erode";
const char* const kBlur = "Blur and enhance";
const char* const kChannel = "Channel separation";

constexpr int kLargestTransformOrder = 13;

/// A power of two above the width, at least 2^10.
int orderOfTransform(int width) {
    return std::max(10, static_cast<int>(std::log2(static_cast<double>(width))) + 1);
}

int sideOfTransform(int width) {
    return 1 << std::min(orderOfTransform(width), kLargestTransformOrder);
}

/// The transform must hold the picture and a margin of 2.
std::optional<std::string> refusalOfFFT(int width, int height) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    const int transform = sideOfTransform(width);
    const int margin = 2;
    if (orderOfTransform(width) > kLargestTransformOrder)
        return "the FFT method cannot take pictures 8192 or more pixels wide (this one is " + size +
               "); use the method LR";
    const std::string room = std::to_string(transform - margin);
    if (width > transform - margin || height > transform - margin)
        return "the FFT method cannot take " + size + " pixels (for this width it has room for " +
               room + " x " + room + "); use the method LR";
    return std::nullopt;
}

std::vector<std::string> adviceOnFFT(int amount) {
    if (amount == 1)
        return {
            "an Amount (Threshold) of 1 leaves only the centre of the FFT method's kernel, which "
            "makes the "
            "picture four times as bright; use 4 or more"};
    if (amount == 2 || amount == 3)
        return {"an Amount (Threshold) of " + std::to_string(amount) +
                " drops the corners of the FFT method's kernel, which brightens the picture; use 4 "
                "or more"};
    return {};
}

std::vector<std::string> adviceOnDetails(int details) {
    if (details >= 3) return {};
    return {"Details (Det) of " + std::to_string(details) +
            " clear the whole distance map, so nothing is separated; use 3 or more"};
}

/// How many pixels of a picture, as a filter sees it, are black, white or between.
struct Levels {
    std::int64_t black = 0, between = 0, white = 0;

    explicit Levels(const HkImage& picture) {
        HkImage grey;
        if (picture.channels >= 3) {
            // The operation writes to its destination only.
            HkImage& source = const_cast<HkImage&>(picture);
            if (HkImageProcessor::getInstance(nullptr)->RGBtoGrayscale(&source, &grey) != 0) return;
        }
        const HkImage& seen = picture.channels >= 3 ? grey : picture;
        for (int y = 0; y < seen.roiHeight; ++y) {
            const unsigned char* row = seen.data + static_cast<std::ptrdiff_t>(y) * seen.step;
            for (int x = 0; x < seen.roiWidth; ++x)
                ++(row[x] == 0 ? black : row[x] == 255 ? white : between);
        }
    }
    double share(std::int64_t count) const {
        const std::int64_t all = black + between + white;
        return all == 0 ? 0.0 : static_cast<double>(count) / static_cast<double>(all);
    }
};

std::string percent(double share) {
    char text[32];
    std::snprintf(text, sizeof text, share < 0.001 ? "less than 0.1" : "%.1f", 100 * share);
    return text;
}

/// Two filters work on grey or on colours, and grey with alpha is neither for them.
bool leavesAsItIs(const QString& key, int channels) {
    return channels == 2 &&
           (key == QLatin1String(kThreshold) || key == QLatin1String(kDeconvolution));
}

/// "99.8 % white" where hardly any background is left, "all black" where nothing else is. A few
/// small objects on black are a good result, the reverse is none.
std::optional<std::string> oneColour(const Levels& levels) {
    const double almostAll = 0.99;
    if (levels.share(levels.white) > almostAll)
        return percent(levels.share(levels.white)) + " % white";
    if (levels.share(levels.black) == 1.0) return "all black";
    return std::nullopt;
}

}  // namespace

int FilterValues::toInt(const char* name) const {
    const HkKernelObjectDataDescr* descr =
        HkFXKernelData::getInstance()->getDataDescriptor(m_typeId);
    const int index = descr ? descr->indexOf(QString::fromLatin1(name)) : -1;
    return index < 0 ? 0 : m_values.at(index).getValue().toInt();
}

bool FilterValues::isEnabled() const {
    return !m_values.isEmpty() && m_values.at(0).getValue().toBool();
}

QString remarkOn(const QString& key, const QString& parameterName) {
    if (key == QLatin1String(kOpenClose) && parameterName == QLatin1String("Dilate"))
        return QStringLiteral(
            "Positive values open, negative ones close, although the page is labelled the other "
            "way round.");
    return QString();
}

std::optional<std::string> refusalOfSize(const QString& key, const FilterValues& values, int width,
                                         int height) {
    if (!values.isEnabled() || key != QLatin1String(kDeconvolution)) return std::nullopt;
    return values.toInt("Method") == 0 ? refusalOfFFT(width, height) : std::nullopt;
}

std::vector<std::string> adviceOnSettings(const QString& key, const FilterValues& values) {
    if (!values.isEnabled()) return {};
    if (key == QLatin1String(kDeconvolution) && values.toInt("Method") == 0)
        return adviceOnFFT(values.toInt("Threshold"));
    if (key == QLatin1String(kSeparator)) return adviceOnDetails(values.toInt("Det"));
    return {};
}

bool looksAtInput(const QString& key, int channels) {
    return key == QLatin1String(kSeparator) || leavesAsItIs(key, channels);
}

bool looksAtResult(const QString& key) {
    return key == QLatin1String(kThreshold);
}

std::vector<std::string> adviceOnInput(const QString& key, const HkImage& input) {
    if (leavesAsItIs(key, input.channels))
        return {
            "it leaves grey pictures with alpha as they are; put \"Channel separation\" before it"};
    if (key != QLatin1String(kSeparator)) return {};
    const Levels levels(input);
    std::vector<std::string> advice;
    if (levels.between > 0)
        advice.push_back("its input is not black and white only (" +
                         percent(levels.share(levels.between)) +
                         " % of the pixels are between); put a threshold before it, such as "
                         "\"Adaptive Thresholding\"");
    if (const auto colour = oneColour(levels))
        advice.push_back("its input is " + *colour +
                         ", so there is nothing to separate; change the filters before it until "
                         "they show white objects on black");
    return advice;
}

std::vector<std::string> adviceOnResult(const QString& key, const HkImage& result) {
    if (!looksAtResult(key)) return {};
    const auto colour = oneColour(Levels(result));
    if (!colour) return {};
    return {"its result is " + *colour +
            "; use a Min value (Min) of 0 and an Area size (Size) about twice as wide as an "
            "object, and see that objects are "
            "brighter than what is around them"};
}

bool resultShowsObjects(const QString& key, const FilterValues& values) {
    return key == QLatin1String(kSeparator) && values.isEnabled() && values.toInt("Type") == 0;
}

double workingBytes(const QString& key, const FilterValues& values, int width, int height) {
    const double pixels = static_cast<double>(width) * height;
    const double deconvolution = 23, separation = 15, transformed = 22;  // bytes of each pixel
    if (!values.isEnabled()) return 0;
    if (key == QLatin1String(kDeconvolution) && values.toInt("Method") == 0) {
        const double transform = sideOfTransform(width);
        return transformed * transform * transform;
    }
    if (key == QLatin1String(kSeparator)) return separation * pixels;
    const bool isSmall = key == QLatin1String(kOpenClose) || key == QLatin1String(kThreshold) ||
                         key == QLatin1String(kDilateErode) || key == QLatin1String(kBlur) ||
                         key == QLatin1String(kChannel);
    return isSmall ? 0 : deconvolution * pixels;
}

}  // namespace document
