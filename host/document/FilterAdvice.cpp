#include "host/document/FilterAdvice.h"

#include <cmath>
#include <memory>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/ImageProcessor/HkImageProcessor.h"

namespace document {
namespace {

const char* const kDeconvolution = "Degauss";
const char* const kSeparator = "Object separator";

/// The transform is a power of two above the width, at least 2^10, and must hold the picture and a
/// margin of 2.
std::vector<std::string> adviceOnFFT(int amount, int width, int height) {
    std::vector<std::string> advice;
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    const int order = std::max(10, static_cast<int>(std::log2(static_cast<double>(width))) + 1);
    const int transform = 1 << std::min(order, 30);
    const int margin = 2, largestOrder = 13;
    if (order > largestOrder)
        advice.push_back(
            "the FFT method cannot take pictures 8192 or more pixels wide (this one is " + size +
            ") and would leave them black; use Method=1");
    else if (width > transform - margin || height > transform - margin)
        advice.push_back(
            "the FFT method cannot take " + size + " pixels (for this width it has room for " +
            std::to_string(transform - margin) + " x " + std::to_string(transform - margin) +
            ") and would leave the picture black; use Method=1");
    if (amount == 1)
        advice.push_back(
            "Threshold=1 leaves only the centre of the FFT method's kernel, which makes the "
            "picture "
            "four times as bright; use 4 or more");
    else if (amount == 2 || amount == 3)
        advice.push_back("Threshold=" + std::to_string(amount) +
                         " drops the corners of the FFT method's kernel, which brightens the "
                         "picture; use 4 or more");
    return advice;
}

std::vector<std::string> adviceOnDetails(int details) {
    if (details >= 3) return {};
    return {"Det=" + std::to_string(details) +
            " clears the whole distance map, so nothing is separated; use 3 or more"};
}

/// The share of pixels that are neither black nor white, as the filter sees the picture.
double greyShare(const HkImage& input) {
    HkImage grey;
    if (input.channels >= 3) {
        HkImage& source =
            const_cast<HkImage&>(input);  // the operation writes to its destination only
        if (HkImageProcessor::getInstance(nullptr)->RGBtoGrayscale(&source, &grey) != 0) return 0;
    }
    const HkImage& seen = input.channels >= 3 ? grey : input;
    std::int64_t between = 0;
    for (int y = 0; y < seen.roiHeight; ++y) {
        const unsigned char* row = seen.data + static_cast<std::ptrdiff_t>(y) * seen.step;
        for (int x = 0; x < seen.roiWidth; ++x) between += row[x] != 0 && row[x] != 255;
    }
    return static_cast<double>(between) / (static_cast<double>(seen.roiWidth) * seen.roiHeight);
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

std::vector<std::string> adviceOnSettings(const QString& key, const FilterValues& values, int width,
                                          int height) {
    if (!values.isEnabled()) return {};
    if (key == QLatin1String(kDeconvolution) && values.toInt("Method") == 0)
        return adviceOnFFT(values.toInt("Threshold"), width, height);
    if (key == QLatin1String(kSeparator)) return adviceOnDetails(values.toInt("Det"));
    return {};
}

bool looksAtPicture(const QString& key) {
    return key == QLatin1String(kSeparator);
}

std::vector<std::string> adviceOnPicture(const QString& key, const HkImage& input) {
    if (!looksAtPicture(key)) return {};
    const double share = greyShare(input);
    if (share == 0) return {};
    char percent[32];
    std::snprintf(percent, sizeof percent, share < 0.001 ? "less than 0.1" : "%.1f", 100 * share);
    return {"its input is not black and white only (" + std::string(percent) +
            " % of the pixels are between); put a threshold before it, such as -f \"Adaptive "
            "threshold\""};
}

bool resultShowsObjects(const QString& key, const FilterValues& values) {
    return key == QLatin1String(kSeparator) && values.isEnabled() && values.toInt("Type") == 0;
}

}  // namespace document
