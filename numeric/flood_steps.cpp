#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "numeric/flood.h"
#include "numeric/flood_grid.h"
#include "numeric/scratch.h"

namespace numeric {
namespace {

/// Breadth-first flood from level to level.
///
/// A pixel's key is its label once that is final, kTentative + label while the pixel waits for its
/// level beside the flooded area, and kUnlabelled before. So "final, or waiting with a label that
/// is no greater" is one comparison, which seeds and the rim (key 0) pass as well.
///
/// Within a level, pixels are taken in the order of their distance and, among equals, of their
/// labels: the first list of a level is sorted, and a list that is sorted leaves a sorted one.
/// Thus the first label to reach a pixel is the smallest.
template <int kNeighbours>
class StepFlood {
public:
    StepFlood(const FloodPlanes& planes, unsigned char* scratch)
        : StepFlood(planes, ScratchLayout(scratch)) {}

    void run() {
        start();
        for (int level = 0; level < kLevels; ++level) {
            int* const extra = enterSeeds(level);
            flood(level, sortByLabel(level, extra));
        }
        finish();
    }

private:
    using Key = std::uint16_t;
    static constexpr Key kTentative = 256;
    static constexpr Key kUnlabelled = 0xFFFF;
    static constexpr int kLookAhead = 12;

    StepFlood(const FloodPlanes& planes, ScratchLayout layout)
        : m_planes(planes),
          m_grid(planes),
          m_neighbours(m_grid.neighbours()),
          m_lists(planes, layout.take<int>(planes.pixels())),
          m_queue(layout.take<int>(planes.pixels())),
          m_keys(layout.take<Key>(m_grid.cells())),
          m_relief(layout.take<unsigned char>(m_grid.innerCells()) - m_grid.stride) {}

    void start() {
        std::fill_n(m_keys, m_grid.cells(), Key{0});
        for (int y = 0; y < m_planes.height(); ++y) {
            const unsigned char* marker = m_planes.marker.row(y);
            for (int x = 0; x < m_planes.width(); ++x)
                m_keys[m_grid.pixel(x, y)] = marker[x] != 0 ? marker[x] : kUnlabelled;
            std::copy_n(m_planes.relief.row(y), m_planes.width(), m_relief + m_grid.pixel(0, y));
        }
        for (int y = 0; y < m_planes.height(); ++y)
            for (int x = 0; x < m_planes.width(); ++x) {
                const int pixel = m_grid.pixel(x, y);
                if (m_keys[pixel] != kUnlabelled && hasUnlabelledNeighbour(pixel))
                    m_lists.add(m_relief[pixel], pixel);
            }
        for (int level = 0; level < kLevels; ++level) m_seedsEnd[level] = m_lists.end(level);
    }

    bool hasUnlabelledNeighbour(int pixel) const {
        for (int i = 0; i < kNeighbours; ++i)
            if (m_keys[pixel + m_neighbours[i]] == kUnlabelled) return true;
        return false;
    }

    /// Lets the level's seeds reach their neighbours. Those whose own level has passed go to the
    /// room of the lists of passed levels; returns the end of them.
    int* enterSeeds(int level) {
        int* extraEnd = m_lists.all();
        for (const int* seed = m_lists.begin(level); seed != m_seedsEnd[level]; ++seed) {
            const Key tentative = kTentative + m_keys[*seed];
            for (int i = 0; i < kNeighbours; ++i) {
                const int next = *seed + m_neighbours[i];
                if (m_keys[next] <= tentative) continue;
                if (m_keys[next] == kUnlabelled) {
                    if (m_relief[next] < level)
                        *extraEnd++ = next;
                    else
                        m_lists.add(m_relief[next], next);
                }
                m_keys[next] = tentative;
            }
        }
        return extraEnd;
    }

    /// Puts the pixels beside the flooded area into the queue, smallest labels first, and makes
    /// their labels final. Returns the end of the queue.
    int* sortByLabel(int level, const int* extraEnd) {
        const auto forEach = [&](auto visit) {
            const int* const listEnd = m_lists.end(level);
            for (const int* p = m_seedsEnd[level]; p != listEnd; ++p) {
                if (listEnd - p > kLookAhead) __builtin_prefetch(m_keys + p[kLookAhead]);
                visit(*p);
            }
            for (const int* p = m_lists.all(); p != extraEnd; ++p) visit(*p);
        };
        std::array<int, kTentative> places{};
        forEach([&](int pixel) { ++places[m_keys[pixel] -= kTentative]; });
        int next = 0;
        for (int& place : places) next += std::exchange(place, next);
        forEach([&](int pixel) { m_queue[places[m_keys[pixel]]++] = pixel; });
        return m_queue + next;
    }

    // The pixels of a level lie all over the plane: their surroundings are asked for in time.
    void fetchAround(int pixel) const {
        for (const int row : {pixel - m_grid.stride, pixel, pixel + m_grid.stride})
            __builtin_prefetch(m_keys + row);
        __builtin_prefetch(m_relief + pixel);
    }

    void flood(int level, int* end) {
        for (const int* pixel = m_queue; pixel != end; ++pixel) {
            if (end - pixel > kLookAhead) fetchAround(pixel[kLookAhead]);
            const Key label = m_keys[*pixel];
            const Key tentative = kTentative + label;
            for (int i = 0; i < kNeighbours; ++i) {
                const int next = *pixel + m_neighbours[i];
                const Key key = m_keys[next];
                if (key <= tentative) continue;
                if (m_relief[next] <= level) {
                    m_keys[next] = label;
                    *end++ = next;
                } else {
                    if (key == kUnlabelled) m_lists.add(m_relief[next], next);
                    m_keys[next] = tentative;
                }
            }
        }
    }

    void finish() {
        for (int y = 0; y < m_planes.height(); ++y) {
            unsigned char* marker = m_planes.marker.row(y);
            const Key* keys = m_keys + m_grid.pixel(0, y);
            for (int x = 0; x < m_planes.width(); ++x)
                marker[x] = keys[x] == kUnlabelled ? 0 : static_cast<unsigned char>(keys[x]);
        }
    }

    FloodPlanes m_planes;
    FloodGrid m_grid;
    std::array<int, 8> m_neighbours;
    LevelLists m_lists;  // seeds first, then the pixels that wait for the level
    std::array<const int*, kLevels> m_seedsEnd{};
    int* m_queue;
    Key* m_keys;
    unsigned char* m_relief;  // no rim above and below, and none is needed
};

}  // namespace

void floodBySteps(const FloodPlanes& planes, bool sidesOnly, unsigned char* scratch) {
    if (sidesOnly)
        StepFlood<4>(planes, scratch).run();
    else
        StepFlood<8>(planes, scratch).run();
}

}  // namespace numeric
