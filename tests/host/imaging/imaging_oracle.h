#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

/// What the imaging operations must compute, in the plainest loops and in double: nothing here is
/// shared with the library under test.
namespace oracle {

/// Interleaved samples of a region.
struct Samples {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<double> values;

    Samples(int w, int h, int c)
        : width(w), height(h), channels(c), values(static_cast<std::size_t>(w) * h * c) {}

    double& at(int x, int y, int c) {
        return values[(static_cast<std::size_t>(y) * width + x) * channels + c];
    }
    /// The border is replicated outwards.
    double at(int x, int y, int c) const {
        const int column = std::clamp(x, 0, width - 1);
        const int row = std::clamp(y, 0, height - 1);
        return values[(static_cast<std::size_t>(row) * width + column) * channels + c];
    }
};

inline Samples forEachSample(const Samples& in,
                             const std::function<double(int x, int y, int c)>& value) {
    Samples out(in.width, in.height, in.channels);
    for (int y = 0; y < in.height; ++y)
        for (int x = 0; x < in.width; ++x)
            for (int c = 0; c < in.channels; ++c) out.at(x, y, c) = value(x, y, c);
    return out;
}

/// One after the other along x and y: both the extremes and the sums below are separable.
inline Samples alongBoth(const Samples& in,
                         const std::function<double(const std::function<double(int)>&)>& combine) {
    const Samples rows = forEachSample(in, [&](int x, int y, int c) {
        return combine([&](int d) { return in.at(x + d, y, c); });
    });
    return forEachSample(rows, [&](int x, int y, int c) {
        return combine([&](int d) { return rows.at(x, y + d, c); });
    });
}

inline Samples largest(const Samples& in, int before, int after) {
    return alongBoth(in, [&](const auto& sample) {
        double result = sample(0);
        for (int d = -before; d <= after; ++d) result = std::max(result, sample(d));
        return result;
    });
}

inline Samples inverted(const Samples& in) {
    return forEachSample(in, [&](int x, int y, int c) { return 255 - in.at(x, y, c); });
}

/// passes > 0 dilate, < 0 erode, literally pass by pass.
inline Samples morphed(Samples image, int passes) {
    for (int i = 0; i < std::abs(passes); ++i)
        image = passes > 0 ? largest(image, 1, 1) : inverted(largest(inverted(image), 1, 1));
    return image;
}

inline std::vector<double> gaussianWeights(int side) {
    switch (side) {  // binomial kernels stand in for the smallest Gaussians
        case 1:
            return {1};
        case 3:
            return {0.25, 0.5, 0.25};
        case 5:
            return {0.0625, 0.25, 0.375, 0.25, 0.0625};
        case 7:
            return {0.03125, 0.109375, 0.21875, 0.28125, 0.21875, 0.109375, 0.03125};
    }
    const double sigma = 0.3 * ((side - 1) * 0.5 - 1) + 0.8;
    std::vector<double> weights;
    double sum = 0;
    for (int i = 0; i < side; ++i) {
        const double d = i - side / 2;
        sum += weights.emplace_back(std::exp(-d * d / (2 * sigma * sigma)));
    }
    for (double& weight : weights) weight /= sum;
    return weights;
}

inline Samples blurred(const Samples& in, int size) {
    const std::vector<double> weights = gaussianWeights(2 * size - 1);
    return alongBoth(in, [&](const auto& sample) {
        double sum = 0;
        for (int i = 0; i < 2 * size - 1; ++i) sum += weights[i] * sample(i - size + 1);
        return sum;
    });
}

/// The mean is rounded to a level, the difference to a whole number upwards.
inline Samples thresholded(const Samples& in, int side, double min) {
    const Samples mean = alongBoth(in, [&](const auto& sample) {
        double sum = 0;
        for (int d = -(side / 2); d <= side / 2; ++d) sum += sample(d);
        return sum;
    });
    return forEachSample(in, [&](int x, int y, int c) {
        const double level = std::floor(mean.at(x, y, c) / side / side + 0.5);
        return in.at(x, y, c) - level > -std::ceil(min) ? 255.0 : 0.0;
    });
}

/// Replaces the first three samples of every pixel.
template <typename Convert>
Samples coloured(Samples image, Convert convert) {
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            convert(image.at(x, y, 0), image.at(x, y, 1), image.at(x, y, 2));
    return image;
}

inline double lumaOf(double r, double g, double b) {
    return 0.299 * r + 0.587 * g + 0.114 * b;
}

inline void rgbToYuv(double& r, double& g, double& b) {
    const double y = lumaOf(r, g, b);
    const double u = 128 + (b - y) * 0.5 / (1 - 0.114);
    const double v = 128 + (r - y) * 0.5 / (1 - 0.299);
    r = y, g = std::min(u, 255.0), b = std::min(v, 255.0);
}

inline void yuvToRgb(double& y, double& u, double& v) {
    const double r = y + (v - 128) * 2 * (1 - 0.299);
    const double b = y + (u - 128) * 2 * (1 - 0.114);
    const double g = (y - 0.299 * r - 0.114 * b) / 0.587;
    y = std::clamp(r, 0.0, 255.0), u = std::clamp(g, 0.0, 255.0), v = std::clamp(b, 0.0, 255.0);
}

inline void rgbToHls(double& r, double& g, double& b) {
    const double high = std::max({r, g, b});
    const double low = std::min({r, g, b});
    const double range = high - low;
    const double sum = high + low;
    double hue = 0;  // in sixths of the circle
    if (range > 0) {
        if (high == r)
            hue = (g - b) / range;
        else if (high == g)
            hue = 2 + (b - r) / range;
        else
            hue = 4 + (r - g) / range;
    }
    const double saturation = range == 0 ? 0 : range / (sum < 255 ? sum : 510 - sum);
    r = (hue < 0 ? hue + 6 : hue) * 256 / 6, g = sum / 2, b = saturation * 255;
}

}  // namespace oracle
