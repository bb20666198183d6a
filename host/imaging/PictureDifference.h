#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "framework/contract/ImageProcessor/HkImage.h"

/// How much two pictures of the same size and channels differ.
struct PictureDifference {
    int channels = 0;
    std::int64_t pixels = 0;
    std::int64_t changedPixels = 0;   ///< that differ in at least one channel
    std::int64_t squaredError = 0;    ///< sum over all samples of all channels, alpha included
    std::array<int, 4> largest = {};  ///< of each channel, 0 to 255

    bool isNone() const { return changedPixels == 0; }

    /// Peak signal-to-noise ratio in decibels, 20 log10(255 / RMSE) over all samples; infinite when
    /// nothing differs.
    double psnr() const {
        if (squaredError == 0) return std::numeric_limits<double>::infinity();
        const double peak = 255;
        const double samples = static_cast<double>(pixels) * channels;
        return 10 * std::log10(peak * peak * samples / static_cast<double>(squaredError));
    }
};

/// Compares the regions. None when one is no picture, or sizes or channels do not agree.
IMAGEPROCESSOR_EXPORT std::optional<PictureDifference> differenceOf(const HkImage& before,
                                                                    const HkImage& after);
