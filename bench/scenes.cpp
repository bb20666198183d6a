#include "bench/scenes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace scenes {

namespace {

/// A linear congruential generator: unlike the library's distributions it gives the same numbers
/// with every compiler.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}
    /// 0 <= result < 1
    double next() {
        m_state = m_state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<double>(m_state >> 40) / static_cast<double>(1u << 24);
    }
    double between(double low, double high) { return low + (high - low) * next(); }

private:
    std::uint64_t m_state;
};

Scene filled(int width, int height, unsigned char value) {
    const std::size_t count = static_cast<std::size_t>(width) * height;
    return {width, height, std::vector<unsigned char>(count, value)};
}

void drawDisc(Scene& scene, double centreX, double centreY, double radius) {
    const int top = std::max(0, static_cast<int>(centreY - radius));
    const int bottom = std::min(scene.height - 1, static_cast<int>(centreY + radius) + 1);
    const int left = std::max(0, static_cast<int>(centreX - radius));
    const int right = std::min(scene.width - 1, static_cast<int>(centreX + radius) + 1);
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x) {
            const double dx = x - centreX, dy = y - centreY;
            if (dx * dx + dy * dy <= radius * radius) scene.at(x, y) = 255;
        }
}

/// Discs on a jittered hexagonal grid.
Scene discs(int width, int height, double pitch, double smallest, double largest, unsigned seed) {
    Scene scene = filled(width, height, 0);
    Random random(seed);
    const double rowPitch = pitch * 0.866;
    int row = 0;
    for (double y = 0; y < height + rowPitch; y += rowPitch, ++row)
        for (double x = row % 2 == 0 ? 0 : pitch / 2; x < width + pitch; x += pitch) {
            const double centreX = x + random.between(-0.06, 0.06) * pitch;
            const double centreY = y + random.between(-0.06, 0.06) * pitch;
            drawDisc(scene, centreX, centreY, random.between(smallest, largest));
        }
    return scene;
}

}  // namespace

Scene denseDiscs(int width, int height, unsigned seed) {
    return discs(width, height, 40, 15, 22, seed);
}

Scene sparseDiscs(int width, int height, unsigned seed) {
    return discs(width, height, 82, 8, 24, seed);
}

Scene noise(int width, int height, unsigned seed, double objectShare) {
    Scene scene = filled(width, height, 0);
    Random random(seed);
    for (unsigned char& pixel : scene.pixels) pixel = random.next() < objectShare ? 255 : 0;
    return scene;
}

Scene spiral(int width, int height) {
    Scene scene = filled(width, height, 0);
    const int stepX[] = {1, 0, -1, 0}, stepY[] = {0, 1, 0, -1};
    const auto isFree = [&scene](int x, int y) {
        const bool inside = x >= 0 && y >= 0 && x < scene.width && y < scene.height;
        return inside && scene.at(x, y) == 0;
    };
    const auto isOpenAhead = [&](int x, int y, int direction) {
        const int nextX = x + stepX[direction], nextY = y + stepY[direction];
        const int beyondX = nextX + stepX[direction], beyondY = nextY + stepY[direction];
        const bool beyondInside =
            beyondX >= 0 && beyondY >= 0 && beyondX < scene.width && beyondY < scene.height;
        return isFree(nextX, nextY) && (!beyondInside || isFree(beyondX, beyondY));
    };
    int x = 0, y = 0, direction = 0;
    scene.at(0, 0) = 255;
    for (int turns = 0; turns < 2;) {  // two turns on the spot: the middle is reached
        if (!isOpenAhead(x, y, direction)) {
            direction = (direction + 1) % 4;
            ++turns;
            continue;
        }
        turns = 0;
        x += stepX[direction];
        y += stepY[direction];
        scene.at(x, y) = 255;
    }
    return scene;
}

Scene serpentine(int width, int height) {
    Scene scene = filled(width, height, 0);
    for (int y = 0; y < height; ++y) {
        if (y % 2 == 0)
            for (int x = 0; x < width; ++x) scene.at(x, y) = 255;
        else
            scene.at(y % 4 == 1 ? width - 1 : 0, y) = 255;
    }
    return scene;
}

Scene transposed(const Scene& scene) {
    Scene result = filled(scene.height, scene.width, 0);
    for (int y = 0; y < scene.height; ++y)
        for (int x = 0; x < scene.width; ++x) result.at(y, x) = scene.at(x, y);
    return result;
}

Scene comb(int width, int height) {
    Scene scene = filled(width, height, 0);
    const int basinTop = height / 2;
    for (int y = basinTop; y < height; ++y)
        for (int x = 0; x < width; ++x) scene.at(x, y) = 255;
    const int arches = width / 4;
    for (int arch = 0; arch < arches; ++arch) {
        const int left = 4 * arch, right = left + 2;
        // From just above the basin for the first arch to the top row for the last.
        const int top = std::max(0, basinTop - 3 -
                                        static_cast<int>(static_cast<long long>(basinTop - 3) *
                                                         arch / std::max(1, arches - 1)));
        for (int x = left; x <= right; ++x) scene.at(x, top) = 255;
        for (int y = top; y < basinTop; ++y) {
            if (y < basinTop - 1) scene.at(left, y) = 255;
            scene.at(right, y) = 255;
        }
    }
    return scene;
}

Scene teeth(int width, int height, int toothWidth) {
    Scene scene = filled(width, height, 255);
    for (int y = 0; y < height; ++y)
        for (int x = toothWidth; x < width; x += toothWidth + 1) scene.at(x, y) = 0;
    return scene;
}

Scene diagonalTeeth(int width, int height, int toothWidth) {
    Scene scene = filled(width, height, 255);
    const int pitch = toothWidth + 2;  // two pixels of wall, or corners would join the corridors
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if ((x + y) % pitch >= toothWidth) scene.at(x, y) = 0;
    return scene;
}

Scene maze(int width, int height, int corridorWidth) {
    Scene scene = filled(width, height, 0);
    const int pitch = corridorWidth + 1;
    const int across = (width + 1) / pitch, down = (height + 1) / pitch;
    const int stepX[] = {1, 0, -1, 0}, stepY[] = {0, 1, 0, -1};
    struct Cell {
        int x, y;
    };
    const auto isOpen = [&](Cell cell) { return scene.at(cell.x * pitch, cell.y * pitch) != 0; };
    const auto open = [&](Cell from, Cell to) {
        for (int y = std::min(from.y, to.y) * pitch;
             y < std::max(from.y, to.y) * pitch + corridorWidth; ++y)
            for (int x = std::min(from.x, to.x) * pitch;
                 x < std::max(from.x, to.x) * pitch + corridorWidth; ++x)
                scene.at(x, y) = 255;
    };
    Random random(1);
    std::vector<Cell> path{{0, 0}};
    open({0, 0}, {0, 0});
    while (!path.empty()) {
        const Cell cell = path.back();
        std::vector<Cell> closed;
        for (int i = 0; i < 4; ++i) {
            const Cell next{cell.x + stepX[i], cell.y + stepY[i]};
            if (next.x >= 0 && next.y >= 0 && next.x < across && next.y < down && !isOpen(next))
                closed.push_back(next);
        }
        if (closed.empty()) {
            path.pop_back();
            continue;
        }
        const Cell next = closed[static_cast<std::size_t>(random.next() * closed.size())];
        open(cell, next);
        path.push_back(next);
    }
    return scene;
}

Scene oneZeroPixel(int width, int height) {
    Scene scene = filled(width, height, 255);
    scene.at(0, 0) = 0;
    return scene;
}

Scene zeroBorder(int width, int height) {
    Scene scene = filled(width, height, 255);
    for (int x = 0; x < width; ++x) scene.at(x, 0) = scene.at(x, height - 1) = 0;
    for (int y = 0; y < height; ++y) scene.at(0, y) = scene.at(width - 1, y) = 0;
    return scene;
}

Scene diagonalLines(int width, int height, int spacing) {
    Scene scene = filled(width, height, 255);
    for (int y = 0; y < height; ++y)
        for (int x = y % spacing; x < width; x += spacing) scene.at(x, y) = 0;
    return scene;
}

MarkerAndMask floodFromFirstPixel(const Scene& corridor) {
    const std::size_t count = corridor.pixels.size();
    MarkerAndMask planes{corridor.width, corridor.height, std::vector<float>(count, 0.0f),
                         std::vector<float>(count)};
    std::transform(corridor.pixels.begin(), corridor.pixels.end(), planes.mask.begin(),
                   [](unsigned char pixel) { return pixel == 0 ? 0.0f : 1.0f; });
    planes.marker.front() = 1.0f;
    return planes;
}

MarkerAndMask combInflows(int width, int height) {
    const Scene scene = comb(width, height);
    MarkerAndMask planes = floodFromFirstPixel(scene);
    planes.marker.front() = 0.0f;
    const int arches = width / 4, footRow = height / 2 - 2;
    for (float& value : planes.mask) value *= static_cast<float>(arches);
    for (int arch = 0; arch < arches && footRow >= 0; ++arch)
        planes.marker[static_cast<std::size_t>(footRow) * width + 4 * arch] =
            static_cast<float>(arch + 1);
    return planes;
}

}  // namespace scenes
