#include "framework/contract/ImageProcessor/HkImage.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>

#include "host/imaging/HkImageAccess.h"
#include "host/imaging/levels.h"

namespace {

/// Bytes from row to row, 0 when an image of these sizes cannot be: every byte of it must have an
/// offset that fits an int, which is what its users calculate in.
int rowStepBytes(int width, int height, int channels, unsigned int rowAlignment) {
    if (width < 1 || height < 1 || channels < 1 || channels > 4 || rowAlignment < 1) return 0;
    const std::int64_t alignment = rowAlignment;
    const std::int64_t row = std::int64_t{width} * channels;
    const std::int64_t step = (row + alignment - 1) / alignment * alignment;
    return step <= INT_MAX / height ? static_cast<int>(step) : 0;
}

/// Floats from row to row of a float plane: its rows start 32 bytes apart or a multiple of that.
std::size_t floatRowLength(int width) {
    return (static_cast<std::size_t>(width) + 7) / 8 * 8;
}

void describe(HkImage& image, unsigned char* pixels, int step, int width, int height,
              int channels) {
    image.data = pixels;
    image.step = step;
    image.channels = channels;
    image.width = image.roiWidth = width;
    image.height = image.roiHeight = height;
}

/// Zeroes the bytes between the end of each row and the next.
void clearPadding(const HkImage& image) {
    const std::ptrdiff_t length = std::ptrdiff_t{image.width} * image.channels;
    if (length == image.step) return;
    for (std::ptrdiff_t y = 0; y < image.height; ++y)
        std::fill(image.data + y * image.step + length, image.data + (y + 1) * image.step, 0);
}

/// Spreads the first width samples of a row over so many channels each, in place.
void repeatSamples(unsigned char* row, int width, int channels) {
    if (channels == 1) return;
    // From the end, where no sample is needed any more.
    for (int x = width - 1; x >= 0; --x) {
        const unsigned char sample = row[x];
        std::fill_n(row + static_cast<std::ptrdiff_t>(x) * channels, channels, sample);
    }
}

/// The offset of the byte behind the last pixel's.
std::size_t endOf(const HkImage& image) {
    return static_cast<std::size_t>(image.height - 1) * static_cast<std::size_t>(image.step) +
           static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.channels);
}

/// At most as many bytes may be used of a block from the heap.
std::size_t sizeOfBlock(void* block) {
#if defined(__GLIBC__)
    return malloc_usable_size(block);
#else
    static_cast<void>(block);
    return SIZE_MAX;
#endif
}

}  // namespace

const char* HkImageAccess::faultOf(const HkImage& image) {
    if (!image.data) return "no pixels";
    if (image.channels < 1 || image.channels > 4) return "a channel count other than 1 to 4";
    if (image.width < 1 || image.height < 1) return "a side below 1";
    if (image.roiWidth < 1 || image.roiHeight < 1) return "a region with a side below 1";
    if (image.roiWidth > image.width || image.roiHeight > image.height)
        return "a region larger than itself";
    if (std::int64_t{image.width} * image.channels > image.step)
        return "rows longer than the step between them";
    if (image.step > INT_MAX / image.height) return "more bytes than a picture can have";
    if (image.data == image.m_owned && endOf(image) > sizeOfBlock(image.m_owned))
        return "sizes beyond the memory it owns";
    return nullptr;
}

bool HkImageAccess::isEmpty(const HkImage& image) {
    return !image.data && image.width == 0 && image.height == 0;
}

bool HkImageAccess::allocate(HkImage& image, int width, int height, int channels,
                             unsigned int rowAlignment, Contents contents) {
    const int step = rowStepBytes(width, height, channels, rowAlignment);
    if (step == 0) return false;
    const std::size_t size = static_cast<std::size_t>(height) * static_cast<std::size_t>(step);
    // calloc: the zeroed pages of a large picture cost nothing until they are touched.
    auto* pixels = static_cast<unsigned char*>(contents == Contents::Zeroed ? std::calloc(size, 1)
                                                                            : std::malloc(size));
    if (!pixels) return false;
    std::free(image.m_owned);
    image.m_owned = pixels;
    describe(image, pixels, step, width, height, channels);
    if (contents == Contents::Undefined) clearPadding(image);
    return true;
}

HkImage::HkImage() = default;

HkImage::HkImage(int newWidth, int newHeight, int newChannels, unsigned char* pixels,
                 unsigned int rowAlignment) {
    if (!pixels) {
        HkImageAccess::allocate(*this, newWidth, newHeight, newChannels, rowAlignment,
                                HkImageAccess::Contents::Zeroed);
        return;
    }
    const int newStep = rowStepBytes(newWidth, newHeight, newChannels, rowAlignment);
    if (newStep != 0) describe(*this, pixels, newStep, newWidth, newHeight, newChannels);
}

HkImage::~HkImage() {
    std::free(m_owned);
}

bool HkImage::getBufferCopy32f(float* dst, float lo, float hi) {
    if (!dst || !HkImageAccess::isPicture(*this) || channels != 1) return false;
    const Dequantizer dequantize(lo, hi);
    const std::size_t rowLength = floatRowLength(width);
    for (int y = 0; y < roiHeight; ++y)
        dequantize.convertRow(data + static_cast<std::ptrdiff_t>(step) * y, dst + rowLength * y,
                              roiWidth);
    return true;
}

void HkImage::setImage32f(int newWidth, int newHeight, int newChannels, float* src, float lo,
                          float hi) {
    if (!src) return;
    const bool fits = HkImageAccess::isPicture(*this) && width == newWidth && height == newHeight &&
                      channels == newChannels;
    if (!fits &&
        !HkImageAccess::allocate(*this, newWidth, newHeight, newChannels,
                                 HkImageAccess::kRowAlignment, HkImageAccess::Contents::Undefined))
        return;

    const Quantizer quantize(lo, hi);
    const std::size_t rowLength = floatRowLength(width);
    for (int y = 0; y < height; ++y) {
        unsigned char* row = data + static_cast<std::ptrdiff_t>(step) * y;
        quantize.convertRow(src + rowLength * y, row, width);
        repeatSamples(row, width, channels);
    }
}
