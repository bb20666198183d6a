#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "numeric/arrival.h"
#include "numeric/flood.h"
#include "numeric/flood_grid.h"
#include "numeric/scratch.h"

namespace numeric {
namespace {

/// Fast marching from level to level without a heap: what is settled never depends on anything
/// less than kLeastAdvance before it, so all pixels of a ring of that width are settled at once,
/// in any order.
///
/// The band holds the pixels beside the settled ones whose level has come. In each ring all of
/// them are worked out, and those that lie within the ring are settled.
class MarchingFlood {
public:
    MarchingFlood(const FloodPlanes& planes, unsigned char* scratch)
        : MarchingFlood(planes, ScratchLayout(scratch)) {}

    void run() {
        start();
        for (int level = 0; level < kLevels; ++level) {
            openLevel(level);
            while (m_bandBegin != m_bandEnd) floodRing(level);
            // What is flooded now counts as distance 0 from the next level on.
            for (const int* pixel = m_lists.all(); pixel != m_settledEnd; ++pixel)
                m_distances[*pixel] = 0;
        }
        finish();
    }

private:
    using Distance = std::uint16_t;
    /// To the neighbour across a side, and from there to the corners on either side of it.
    struct Direction {
        int side;
        int along;
    };
    // Any distance from here on is none; a pixel that is free, one that is in a list, and a rim
    // pixel or a seed that has not entered.
    static constexpr Distance kClosed = 0xFFFD;
    static constexpr Distance kListed = 0xFFFE;
    static constexpr Distance kFree = 0xFFFF;
    static constexpr int kLargestDistance = 0xF000;
    /// A pixel in the band depends on no ring older than these.
    static constexpr int kRecentRings = 3;

    MarchingFlood(const FloodPlanes& planes, ScratchLayout layout)
        : m_planes(planes),
          m_grid(planes),
          m_neighbours(m_grid.neighbours()),
          m_directions{
              {{-m_grid.stride, 1}, {-1, m_grid.stride}, {1, m_grid.stride}, {m_grid.stride, 1}}},
          m_lists(planes, layout.take<int>(planes.pixels())),
          m_distances(layout.take<Distance>(m_grid.cells())),
          m_labels(layout.take<unsigned char>(m_grid.cells())),
          m_relief(layout.take<unsigned char>(m_grid.innerCells()) - m_grid.stride) {}

    void start() {
        std::fill_n(m_distances, m_grid.cells(), kClosed);
        std::fill_n(m_labels, m_grid.cells(), static_cast<unsigned char>(0));
        for (int y = 0; y < m_planes.height(); ++y) {
            const unsigned char* marker = m_planes.marker.row(y);
            for (int x = 0; x < m_planes.width(); ++x)
                if (marker[x] == 0) m_distances[m_grid.pixel(x, y)] = kFree;
            std::copy_n(marker, m_planes.width(), m_labels + m_grid.pixel(0, y));
            std::copy_n(m_planes.relief.row(y), m_planes.width(), m_relief + m_grid.pixel(0, y));
        }
        for (int y = 0; y < m_planes.height(); ++y)
            for (int x = 0; x < m_planes.width(); ++x) {
                const int pixel = m_grid.pixel(x, y);
                if (m_distances[pixel] == kClosed && hasFreeNeighbour(pixel))
                    m_lists.add(m_relief[pixel], pixel);
            }
        for (int level = 0; level < kLevels; ++level) m_seedsEnd[level] = m_lists.end(level);
    }

    bool hasFreeNeighbour(int pixel) const {
        return std::any_of(m_neighbours.begin(), m_neighbours.end(),
                           [&](int offset) { return m_distances[pixel + offset] == kFree; });
    }

    /// Lets the level's seeds enter and gathers the band. The room of the lists up to this level
    /// is used again, settled pixels from its begin up and the band from its end down: they are
    /// different pixels of these levels and no seeds, so they never meet, nor reach the seeds that
    /// are put at the begin for now.
    void openLevel(int level) {
        int* const seeds = m_lists.begin(level);
        int* const waiting = m_seedsEnd[level];
        m_bandEnd = m_lists.roomEnd(level);
        m_bandBegin = std::copy_backward(waiting, m_lists.end(level), m_bandEnd);
        m_settledEnd = m_lists.all();
        const int* const seedsEnd = std::copy(seeds, waiting, m_settledEnd);
        for (const int* seed = m_lists.all(); seed != seedsEnd; ++seed) {
            m_distances[*seed] = 0;
            listNeighbours(*seed, level);
        }
        m_ringStarts.fill(m_settledEnd);
        m_ringEnd = kLeastAdvance;
    }

    void listNeighbours(int pixel, int level) {
        for (const int offset : m_neighbours) {
            const int next = pixel + offset;
            if (m_distances[next] != kFree) continue;
            m_distances[next] = kListed;
            if (m_relief[next] <= level)
                *--m_bandBegin = next;
            else
                m_lists.add(m_relief[next], next);
        }
    }

    void floodRing(int level) {
        if (m_ringEnd > kLargestDistance) bringDistancesDown();
        m_ringEnd += kLeastAdvance;
        std::copy(m_ringStarts.begin() + 1, m_ringStarts.end(), m_ringStarts.begin());
        m_ringStarts.back() = m_settledEnd;
        for (int* unchecked = m_bandEnd; unchecked != m_bandBegin;) {
            int& pixel = unchecked[-1];
            if (settle(pixel)) {
                *m_settledEnd++ = std::exchange(pixel, *m_bandBegin);
                ++m_bandBegin;
            } else {
                --unchecked;
            }
        }
        for (const int* pixel = m_ringStarts.back(); pixel != m_settledEnd; ++pixel)
            listNeighbours(*pixel, level);
    }

    /// Long ways end where the numbers do: only the recent rings still count, and they move down.
    void bringDistancesDown() {
        const int shift = m_ringEnd - kRecentRings * kLeastAdvance;
        for (const int* pixel = m_ringStarts.front(); pixel != m_settledEnd; ++pixel)
            m_distances[*pixel] = static_cast<Distance>(m_distances[*pixel] - shift);
        m_ringEnd -= shift;
    }

    /// Settles the pixel if its distance lies within the ring: with the smallest label of those
    /// that arrive over any side at that distance.
    bool settle(int pixel) {
        int distance = m_ringEnd;
        unsigned char label = 255;
        for (const auto& [side, along] : m_directions) {
            const int across = pixel + side;
            const int cornerDistance =
                std::min(m_distances[across - along], m_distances[across + along]);
            const int arriving = arrival(m_distances[across], cornerDistance);
            if (arriving > distance || arriving >= m_ringEnd) continue;
            const bool isOfSide = m_distances[across] - cornerDistance <= kLargestLeadOfSide;
            const int source = isOfSide ? across : earlier(across - along, across + along);
            label = arriving < distance ? m_labels[source] : std::min(label, m_labels[source]);
            distance = arriving;
        }
        if (distance >= m_ringEnd) return false;
        m_labels[pixel] = label;
        m_distances[pixel] = static_cast<Distance>(distance);
        return true;
    }

    int earlier(int first, int second) const {
        if (m_distances[first] != m_distances[second])
            return m_distances[first] < m_distances[second] ? first : second;
        return m_labels[first] < m_labels[second] ? first : second;
    }

    void finish() {
        for (int y = 0; y < m_planes.height(); ++y)
            std::copy_n(m_labels + m_grid.pixel(0, y), m_planes.width(), m_planes.marker.row(y));
    }

    FloodPlanes m_planes;
    FloodGrid m_grid;
    std::array<int, 8> m_neighbours;
    std::array<Direction, 4> m_directions;
    LevelLists m_lists;  // seeds first, then the pixels that wait for the level
    std::array<int*, kLevels> m_seedsEnd{};
    Distance* m_distances;
    unsigned char* m_labels;
    unsigned char* m_relief;  // no rim above and below, and none is needed
    int* m_settledEnd = nullptr;
    int* m_bandBegin = nullptr;
    int* m_bandEnd = nullptr;
    int m_ringEnd = 0;
    std::array<const int*, kRecentRings> m_ringStarts{};  // among the settled pixels
};

}  // namespace

void floodByMarching(const FloodPlanes& planes, unsigned char* scratch) {
    MarchingFlood(planes, scratch).run();
}

}  // namespace numeric
