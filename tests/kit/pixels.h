#pragma once

#include <cstddef>
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
