#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <queue>
#include <tuple>
#include <vector>

#include "planes.h"

namespace numeric::test {

/// A plain priority flood, by the letter of the watershed's definition: every pixel is taken from
/// one queue in the order of level, distance and label, and settled by its settled neighbours.
class FloodOracle {
public:
    FloodOracle(const BytePlane& relief, const BytePlane& marker, int norm, bool bySteps)
        : m_relief(relief),
          m_marker(marker),
          m_sidesOnly(norm == 1),
          m_bySteps(bySteps || norm < 2),
          m_settled(relief.width(), relief.height()) {
        flood();
    }

    BytePlane labels() const {
        BytePlane result(m_relief.width(), m_relief.height());
        return result.set([this](int x, int y) {
            return static_cast<unsigned char>(std::max(m_settled.at(x, y).label, 0));
        });
    }

private:
    static constexpr int kFar = std::numeric_limits<int>::max() / 2;
    static constexpr int kSide = 169;
    static constexpr int kCorner = 239;

    struct Settled {
        int level = -1;  // not yet settled
        int distance = 0;
        int label = 0;
    };
    struct Arrival {
        int distance = kFar;
        int label = 256;
        bool operator<(const Arrival& other) const {
            return std::tie(distance, label) < std::tie(other.distance, other.label);
        }
    };

    bool isInside(int x, int y) const {
        return x >= 0 && y >= 0 && x < m_relief.width() && y < m_relief.height();
    }

    /// A neighbour as it counts during a level: whatever was flooded before has distance 0.
    Arrival neighbour(int x, int y, int level) const {
        if (!isInside(x, y)) return {};
        const Settled& pixel = m_settled.at(x, y);
        if (pixel.level < 0) return {};
        return {pixel.level < level ? 0 : pixel.distance, pixel.label};
    }

    /// Across a side, or along any line between the side and its two corners.
    Arrival arrivalFrom(const Arrival& side, const Arrival& corner) const {
        if (m_bySteps) {
            const Arrival& nearer = m_sidesOnly ? side : std::min(side, corner);
            return {std::min(nearer.distance + 1, kFar), nearer.label};
        }
        const int lead = side.distance - corner.distance;  // of the corner
        if (side.distance == kFar && corner.distance == kFar) return {};
        if (lead <= 0) return {side.distance + kSide, side.label};
        if (lead >= kCorner - kSide / std::sqrt(2))
            return {corner.distance + kCorner, corner.label};
        const double rest = std::sqrt(static_cast<double>(kSide * kSide - lead * lead));
        const int distance = side.distance + static_cast<int>(std::lround(rest));
        // The ray comes from the nearer of the two directions, 22.5 degrees being the middle.
        return {distance, lead > kSide * 0.38268 ? corner.label : side.label};
    }

    Arrival arrival(int x, int y, int level) const {
        const auto at = [&](int dx, int dy) { return neighbour(x + dx, y + dy, level); };
        const auto corner = [&](int ax, int ay, int bx, int by) {
            return std::min(at(ax, ay), at(bx, by));
        };
        return std::min({arrivalFrom(at(0, -1), corner(-1, -1, 1, -1)),
                         arrivalFrom(at(0, 1), corner(-1, 1, 1, 1)),
                         arrivalFrom(at(-1, 0), corner(-1, -1, -1, 1)),
                         arrivalFrom(at(1, 0), corner(1, -1, 1, 1))});
    }

    void flood() {
        using Entry = std::tuple<int, int, int, int, int>;  // level, distance, label, x, y
        std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue;
        for (int y = 0; y < m_relief.height(); ++y)
            for (int x = 0; x < m_relief.width(); ++x)
                if (m_marker.at(x, y) != 0)
                    queue.push({m_relief.at(x, y), 0, m_marker.at(x, y), x, y});
        while (!queue.empty()) {
            const auto [level, distance, label, x, y] = queue.top();
            queue.pop();
            Settled& pixel = m_settled.at(x, y);
            if (pixel.level >= 0) continue;
            const bool isSeed = m_marker.at(x, y) != 0;
            pixel = {level, distance, isSeed ? label : arrival(x, y, level).label};
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int nx = x + dx, ny = y + dy;
                    if (!isInside(nx, ny) || m_settled.at(nx, ny).level >= 0) continue;
                    if (m_marker.at(nx, ny) != 0) continue;
                    const int nextLevel = std::max<int>(level, m_relief.at(nx, ny));
                    const Arrival next = arrival(nx, ny, nextLevel);
                    if (next.distance < kFar)
                        queue.push({nextLevel, next.distance, next.label, nx, ny});
                }
        }
    }

    const BytePlane& m_relief;
    const BytePlane& m_marker;
    bool m_sidesOnly, m_bySteps;
    TestPlane<Settled> m_settled;
};

/// With borders as flags 64 (sidesOnly) and 128 draw them.
inline BytePlane withBorders(const BytePlane& labels, bool sidesOnly) {
    BytePlane result(labels.width(), labels.height());
    return result.set([&](int x, int y) {
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                if (sidesOnly && dx != 0 && dy != 0) continue;
                const int nx = x + dx, ny = y + dy;
                if (nx < 0 || ny < 0 || nx >= labels.width() || ny >= labels.height()) continue;
                if (labels.at(nx, ny) > labels.at(x, y)) return static_cast<unsigned char>(255);
            }
        return labels.at(x, y);
    });
}

}  // namespace numeric::test
