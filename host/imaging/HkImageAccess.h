#pragma once

#include "framework/contract/ImageProcessor/HkImage.h"

/// What the imaging library does with the block an image owns, and what it asks of any image.
struct HkImageAccess {
    /// What keeps the members of the image, which anyone can write, from describing pixels: null
    /// when they do (1 to 4 channels, a region within the image, rows no longer than the step, no
    /// byte outside the block that the image owns). Completes "the picture has".
    IMAGEPROCESSOR_EXPORT static const char* faultOf(const HkImage& image);
    static bool isPicture(const HkImage& image) { return !faultOf(image); }

    /// True for an image without pixels and sizes, which an operation may fill.
    static bool isEmpty(const HkImage& image);

    /// Of the samples of a new block: Undefined where all are written at once.
    enum class Contents { Undefined, Zeroed };

    /// Gives the image pixels of its own, the region being all of them, in place of those it shows.
    /// False, and the image as it was, when the sizes cannot be or there is no memory.
    static bool allocate(HkImage& image, int width, int height, int channels,
                         unsigned int rowAlignment, Contents contents);

    /// Row alignment of the images the library itself makes.
    static constexpr unsigned int kRowAlignment = 4;
};
