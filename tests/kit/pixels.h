#pragma once

#include <cstddef>
#include <memory>
#include <random>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"

/// The samples of the region, row by row.
inline std::vector<unsigned char> pixels(const HkImage& image) {
    std::vector<unsigned char> samples;
    for (int y = 0; y < image.roiHeight; ++y) {
        const unsigned char* row = image.data + static_cast<std::ptrdiff_t>(image.step) * y;
        samples.insert(samples.end(), row, row + image.roiWidth * image.channels);
    }
    return samples;
}

/// One of an image's samples, which may be written.
inline unsigned char& sample(const HkImage& image, int x, int y, int channel = 0) {
    return image.data[static_cast<std::ptrdiff_t>(image.step) * y + x * image.channels + channel];
}

/// An image of noise, the ends of its rows too.
inline std::unique_ptr<HkImage> noise(int width, int height, int channels, unsigned seed) {
    auto image = std::make_unique<HkImage>(width, height, channels, nullptr, 4u);
    std::minstd_rand random(seed);
    for (int i = 0; i < image->step * height; ++i)
        image->data[i] = static_cast<unsigned char>(random() >> 8);
    return image;
}
