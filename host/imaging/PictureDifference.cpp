#include "host/imaging/PictureDifference.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "host/imaging/HkImageAccess.h"

namespace {

bool agree(const HkImage& a, const HkImage& b) {
    return HkImageAccess::isPicture(a) && HkImageAccess::isPicture(b) && a.roiWidth == b.roiWidth &&
           a.roiHeight == b.roiHeight && a.channels == b.channels;
}

unsigned char* rowOf(const HkImage& image, int y) {
    return image.data + static_cast<std::ptrdiff_t>(image.step) * y;
}

}  // namespace

std::optional<PictureDifference> differenceOf(const HkImage& before, const HkImage& after) {
    if (!agree(before, after)) return {};
    PictureDifference result;
    result.channels = before.channels;
    result.pixels = std::int64_t{before.roiWidth} * before.roiHeight;
    for (int y = 0; y < before.roiHeight; ++y) {
        const unsigned char* a = rowOf(before, y);
        const unsigned char* b = rowOf(after, y);
        for (int x = 0; x < before.roiWidth; ++x) {
            bool isChanged = false;
            for (std::size_t c = 0; c < static_cast<std::size_t>(result.channels); ++c) {
                const int difference = std::abs(*a++ - *b++);
                result.squaredError += difference * difference;
                result.largest[c] = std::max(result.largest[c], difference);
                isChanged |= difference != 0;
            }
            result.changedPixels += isChanged;
        }
    }
    return result;
}

std::unique_ptr<HkImage> amplifiedDifference(const HkImage& before, const HkImage& after,
                                             int gain) {
    if (!agree(before, after)) return nullptr;
    const bool hasAlpha = before.channels % 2 == 0;
    const int colours = before.channels - (hasAlpha ? 1 : 0);
    auto result = std::make_unique<HkImage>();
    if (!HkImageAccess::allocate(*result, before.roiWidth, before.roiHeight, colours,
                                 HkImageAccess::kRowAlignment, HkImageAccess::Contents::Undefined))
        return nullptr;
    for (int y = 0; y < before.roiHeight; ++y) {
        const unsigned char* a = rowOf(before, y);
        const unsigned char* b = rowOf(after, y);
        unsigned char* out = rowOf(*result, y);
        for (int x = 0; x < before.roiWidth; ++x) {
            const int ofAlpha = hasAlpha ? std::abs(a[colours] - b[colours]) : 0;
            for (int c = 0; c < colours; ++c) {
                const std::int64_t difference = std::max(ofAlpha, std::abs(a[c] - b[c]));
                *out++ = static_cast<unsigned char>(std::min<std::int64_t>(difference * gain, 255));
            }
            a += before.channels;
            b += before.channels;
        }
    }
    return result;
}
