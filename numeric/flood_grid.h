#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "numeric/flood.h"

namespace numeric {

inline constexpr int kLevels = 256;

/// Pixels are numbered row by row in a grid with a rim of one pixel, so that every pixel has eight
/// neighbours.
struct FloodGrid {
    int stride;
    int rows;

    explicit FloodGrid(const FloodPlanes& planes)
        : stride(planes.width() + 2), rows(planes.height() + 2) {}
    std::int64_t cells() const { return std::int64_t{stride} * rows; }
    /// Cells of an array without the first and the last row.
    std::int64_t innerCells() const { return cells() - 2 * std::int64_t{stride}; }
    int pixel(int x, int y) const { return (y + 1) * stride + x + 1; }
    /// The first four are the neighbours across a side.
    std::array<int, 8> neighbours() const {
        return {-stride, -1, 1, stride, -stride - 1, -stride + 1, stride - 1, stride + 1};
    }
};

/// A list of pixels for each level, all in one array: level r has as much room as there are pixels
/// of that relief.
class LevelLists {
public:
    LevelLists(const FloodPlanes& planes, int* pixels) : m_pixels(pixels) {
        std::array<int, kLevels> counts{};
        for (int y = 0; y < planes.height(); ++y) {
            const unsigned char* row = planes.relief.row(y);
            for (int x = 0; x < planes.width(); ++x) ++counts[row[x]];
        }
        for (int level = 0; level < kLevels; ++level) {
            m_ends[level] = m_starts[level];
            m_starts[level + 1] = m_starts[level] + counts[level];
        }
    }

    void add(int level, int pixel) { m_pixels[m_ends[level]++] = pixel; }
    int* begin(int level) const { return m_pixels + m_starts[level]; }
    int* end(int level) const { return m_pixels + m_ends[level]; }
    /// The room of all lists up to a level lies between these two.
    int* all() const { return m_pixels; }
    int* roomEnd(int level) const { return m_pixels + m_starts[level + 1]; }

private:
    int* m_pixels;
    std::array<int, kLevels + 1> m_starts{};
    std::array<int, kLevels> m_ends{};
};

}  // namespace numeric
