#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "framework/contract/ImageProcessor/HkImage.h"

// What a window shows of pictures beside the pictures themselves. All work on the region, change
// nothing they are given, and may be called from any thread. Functions that make a picture return
// null for something that is no picture, for sizes that do not agree, and when memory ran out.

/// The region with its channels.
IMAGEPROCESSOR_EXPORT std::unique_ptr<HkImage> copyPicture(const HkImage& picture);

/// The region, each side divided by `factor` (1 or more), each pixel the mean of those it stands
/// for. No side becomes shorter than 1 pixel.
IMAGEPROCESSOR_EXPORT std::unique_ptr<HkImage> reducedPicture(const HkImage& picture, int factor);

/// The region at another size, at most its own on both axes: each pixel is the mean of the area
/// that it stands for.
IMAGEPROCESSOR_EXPORT std::unique_ptr<HkImage> scaledPicture(const HkImage& picture, int width,
                                                             int height);

/// |after - before| * gain for each sample, cut at 255: grey when both are, else RGB. Where both
/// have alpha, what differs there shows in all channels.
IMAGEPROCESSOR_EXPORT std::unique_ptr<HkImage> differencePicture(const HkImage& before,
                                                                 const HkImage& after, int gain);

/// The picture in RGB with each white area of `areas` (one channel, same size; pixels that touch by
/// a corner belong together) tinted in a colour of its own, neighbours in different ones.
IMAGEPROCESSOR_EXPORT std::unique_ptr<HkImage> withAreasTinted(const HkImage& picture,
                                                               const HkImage& areas);

/// How often each level occurs: one channel for grey pictures, R, G, B for others; alpha is left
/// out. No channel for something that is no picture.
struct LevelCounts {
    int channels = 0;
    std::array<std::array<std::uint32_t, 256>, 3> counts = {};
};
IMAGEPROCESSOR_EXPORT LevelCounts levelCounts(const HkImage& picture);

/// One pixel as numbers; grey counts as a colour of three equal parts.
struct PixelValue {
    bool isValid = false;  ///< false outside the region
    std::array<int, 3> rgb = {};
    std::array<int, 3> yuv = {};
    std::array<int, 3> hls = {};
};
IMAGEPROCESSOR_EXPORT PixelValue pixelAt(const HkImage& picture, int x, int y);
