#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "tests/numeric/planes.h"

/// Slow and plain versions of the distance transform, the labelling and the peak step.
/// The others: deconv_oracle.h and flood_oracle.h.
namespace numeric::test {

/// Every zero pixel tried for every pixel.
inline FloatPlane distancesByTrying(const BytePlane& src) {
    std::vector<std::pair<std::int64_t, std::int64_t>> zeros;
    for (int y = 0; y < src.height(); ++y)
        for (int x = 0; x < src.width(); ++x)
            if (src.at(x, y) == 0) zeros.emplace_back(x, y);
    FloatPlane result(src.width(), src.height());
    return result.set([&zeros](int x, int y) {
        if (zeros.empty()) return std::sqrt(std::numeric_limits<float>::max());
        std::int64_t least = std::numeric_limits<std::int64_t>::max();
        for (const auto& [zeroX, zeroY] : zeros)
            least = std::min(least, (x - zeroX) * (x - zeroX) + (y - zeroY) * (y - zeroY));
        return static_cast<float>(std::sqrt(static_cast<double>(least)));
    });
}

/// Bit for bit where the squared distance is below 2^24, within one unit in the last place beyond.
inline void expectDistances(const FloatPlane& expected, const FloatPlane& actual) {
    FloatPlane nearest(expected);
    nearest.set([&](int x, int y) {
        const float wanted = expected.at(x, y);
        const float got = actual.at(x, y);
        const bool isNext =
            got == std::nextafter(wanted, 0.0F) || got == std::nextafter(wanted, 1e9F);
        return wanted >= 4096.0F && wanted < 1e9F && isNext ? got : wanted;
    });
    EXPECT_TRUE(samePixels(nearest, actual));
}

/// Area numbers from 1 by plain flood fill, in raster order of first pixels. Returns how many.
inline int floodFill(const BytePlane& marker, int connectivity, TestPlane<int>& areas) {
    areas.fill(0);
    int count = 0;
    std::vector<std::pair<int, int>> open;
    const auto visit = [&](int x, int y) {
        if (x < 0 || y < 0 || x >= marker.width() || y >= marker.height()) return;
        if (marker.at(x, y) == 0 || areas.at(x, y) != 0) return;
        areas.at(x, y) = count;
        open.emplace_back(x, y);
    };
    for (int y = 0; y < marker.height(); ++y)
        for (int x = 0; x < marker.width(); ++x) {
            if (marker.at(x, y) == 0 || areas.at(x, y) != 0) continue;
            ++count;
            visit(x, y);
            while (!open.empty()) {
                const auto [px, py] = open.back();
                open.pop_back();
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx)
                        if (connectivity == 0 || dx == 0 || dy == 0) visit(px + dx, py + dy);
            }
        }
    return count;
}

/// Raises single pixels until no pixel can be raised.
inline FloatPlane raisedUntilStable(const FloatPlane& bound, const FloatPlane& start,
                                    bool sidesOnly) {
    FloatPlane plane(start);
    const int width = plane.width();
    const int height = plane.height();
    plane.set([&](int x, int y) {
        const float value =
            std::isnan(plane.at(x, y)) ? -std::numeric_limits<float>::infinity() : plane.at(x, y);
        const float lowered = value > bound.at(x, y) ? bound.at(x, y) : value;
        return lowered == 0 ? 0.0F : lowered;
    });
    for (bool changed = true; changed;) {
        changed = false;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                float& pixel = plane.at(x, y);
                for (int dy = -1; dy <= 1; ++dy) {
                    for (int dx = -1; dx <= 1; ++dx) {
                        if (sidesOnly && dx != 0 && dy != 0) continue;
                        if (x + dx < 0 || x + dx >= width || y + dy < 0 || y + dy >= height)
                            continue;
                        const float limit = bound.at(x, y) == 0 ? 0.0F : bound.at(x, y);
                        const float value = plane.at(x + dx, y + dy);
                        if (!(value > pixel) || !(limit > pixel)) continue;
                        pixel = std::min(value, limit);
                        changed = true;
                    }
                }
            }
        }
    }
    return plane;
}

}  // namespace numeric::test
