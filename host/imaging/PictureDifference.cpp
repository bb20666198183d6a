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
