#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "numeric/base/scratch.h"
#include "numeric/watershed/arrival.h"
#include "numeric/watershed/flood.h"
#include "numeric/watershed/flood_field.h"

namespace numeric {
namespace {

/// Fast marching from level to level without a heap: what is settled never depends on anything less
/// than kLeastAdvance before it, so all pixels of a ring of that width are settled at once, in any
/// order.
///
/// The first ring of a level are the pixels beside what was flooded before, all at distance 0: how
/// they are reached is known beforehand. After them comes the band, the open pixels beside settled
/// ones. For each ring all of them are worked out, and those that lie within the ring are settled.
/// Since every neighbour of what was flooded before is in the first ring, the band depends on
/// distances of this level alone.
///
/// A level's free pixels are listed beforehand, and each finds out whether it is of the first ring.
/// That is less work than to tell every neighbour of every settled pixel. At the first level, where
/// all that is flooded before are seeds, these tell their neighbours.
///
/// A list is worked on in fronts: read all, then write all (front_rows.h).
class MarchingFlood {
public:
    MarchingFlood(const FloodPlanes& planes, const WatershedRows& rows, const FrontRows& frontRows,
                  unsigned char* scratch)
        : MarchingFlood(planes, rows, frontRows, ScratchLayout(scratch)) {}

    void run() {
        m_field.flood([this] { listFreePixels(); },
                      [this](int level) {
                          m_level = level;
                          return floodLevel();
                      });
    }

private:
    using Key = FloodKey;
    using Distance = std::uint16_t;
    static constexpr Distance kNone = FloodField::kNoDistance;
    static constexpr int kLargestDistance = 0xF000;
    /// A pixel in the band depends on no ring older than these.
    static constexpr int kRecentRings = 3;
    static constexpr int kLookAhead = 12;
    /// So few pixels in the band are fronts in corridors, and their next steps easily foreseen.
    static constexpr int kFew = 32;

    MarchingFlood(const FloodPlanes& planes, const WatershedRows& rows, const FrontRows& frontRows,
                  ScratchLayout layout)
        : m_field(planes, rows, FloodField::Distances::Kept, layout),
          m_frontRows(frontRows),
          m_keys(m_field.keys()),
          m_stride(m_field.stride()),
          m_distances(m_field.distances()) {
        std::fill_n(m_distances + m_stride, m_field.cells() - m_stride, kNone);
        for (std::size_t i = 0; i < m_offsets.size(); ++i)
            m_offsets[i] =
                static_cast<int>(kNeighbourOrder[i].row * m_stride) + kNeighbourOrder[i].column;
    }

    /// Lists the pixels above the first level with their own, and hides the seeds.
    void listFreePixels() {
        const int first = kFreeKey + m_field.lowestLevel();
        const auto cells = static_cast<int>(m_field.cells());
        if (m_field.highestLevel() > m_field.lowestLevel())
            for (int pixel = 0; pixel < cells; ++pixel)
                if (m_keys[pixel] > first) m_field.add(m_keys[pixel] - kFreeKey, pixel);
        for (int pixel = 0; pixel < cells; ++pixel) {
            Key& key = m_keys[pixel];
            key = static_cast<Key>(key >= kFreeKey || key == kRimKey ? key : key | kHiddenSeed);
        }
    }

    std::int64_t floodLevel() {
        const auto [room, seeds, waiting, end] = m_field.openLevel(m_level);
        m_field.setListEnd(m_level, room);
        const bool isFirst = m_level == m_field.lowestLevel();
        for (int* pixel = seeds; pixel != waiting; ++pixel) m_keys[*pixel] &= kLabelMask;
        addOpenNeighbours(seeds, waiting, isFirst ? m_level : m_level - 1);
        m_band = m_field.listEnd(m_level);
        int* const besideSeeds = reachFirstRing(room, m_band);
        int* const ring = reachFirstRing(waiting, end);
        settleFirstRing(besideSeeds, m_band);
        settleFirstRing(ring, end);
        std::int64_t settled = (m_band - besideSeeds) + (end - ring);
        // Neighbours of the first ring are reached over it alone, the corners' last.
        m_ringEnd = kSideDistance + kLeastAdvance;
        m_ringsOfOneLabel = 0;
        while (m_field.listEnd(m_level) != m_band)
            settled += m_ringsOfOneLabel < kRecentRings ? floodRing() : fill();
        return settled;
    }

    // --- Lists, a front after the other

    static int lengthOfFront(const int* begin, const int* end) {
        return static_cast<int>(std::min<std::ptrdiff_t>(end - begin, Front::kMost));
    }

    static Front frontAt(const int* begin, const int* end) {
        const int count = lengthOfFront(begin, end);
        return {begin, count, begin + count, lengthOfFront(begin + count, end)};
    }

    /// The list itself, which was written long ago.
    static void fetchBefore(const int* pixels) {
        constexpr int kPixelsOfLine = 16;
        for (int i = 0; i < Front::kMost; i += kPixelsOfLine)
            __builtin_prefetch(pixels - Front::kMost + i);
    }

    /// Finds the pixels of a list that are of the first ring, and moves them to its end. Returns
    /// their begin. The others are not reached over what was flooded before the level.
    int* reachFirstRing(int* begin, int* end) {
        int* ring = end;
        int count = lengthOfFront(begin, end);
        while (count > 0) {
            end -= count;
            const int nextCount = lengthOfFront(begin, end);
            fetchBefore(end - nextCount);
            Key reached[Front::kMost];
            m_frontRows.reach(m_keys, m_stride, {end, count, end - nextCount, nextCount}, m_level,
                              reached);
            for (int i = count - 1; i >= 0; --i) {
                const int pixel = end[i];
                const bool isReached = reached[i] != 0;
                m_keys[pixel] = isReached ? reached[i] : m_keys[pixel];
                ring[-1] = pixel;
                ring -= isReached ? 1 : 0;
            }
            count = nextCount;
        }
        return ring;
    }

    /// Makes the labels of the first ring final, and begins the band with its open neighbours.
    void settleFirstRing(const int* begin, const int* end) {
        while (begin != end) {
            int pixels[Front::kMost];
            Distance distances[Front::kMost];
            int count = 0;
            for (const int* const next = begin + lengthOfFront(begin, end); begin != next;
                 ++begin) {
                if (end - begin > kLookAhead) __builtin_prefetch(m_keys + begin[kLookAhead], 1);
                Key& key = m_keys[*begin];
                pixels[count] = *begin;
                distances[count] = (key & kOverCorner) != 0 ? kCornerDistance : kSideDistance;
                count += (key & kBesideOpen) != 0 ? 1 : 0;
                key &= kLabelMask;
            }
            // The band depends on no other distances.
            for (int i = 0; i < count; ++i) m_distances[pixels[i]] = distances[i];
            addOpenNeighbours(pixels, pixels + count, m_level);
        }
    }

    /// Lists the open neighbours of pixels.
    void addOpenNeighbours(const int* begin, const int* end, int level) {
        while (begin != end) {
            const Front front = frontAt(begin, end);
            std::uint16_t open[Front::kMost];
            m_frontRows.findOpen(m_keys, m_stride, front, level, open);
            for (int i = 0; i < front.count; ++i, ++begin)
                for (unsigned bits = open[i]; bits != 0; bits &= bits - 1)
                    addIfOpen(*begin + m_offsets[static_cast<std::size_t>(__builtin_ctz(bits))],
                              level);
        }
    }

    void addIfOpen(int pixel, int level) {
        const int height = m_keys[pixel] - kFreeKey;
        if (height < 0 || height > level) return;
        m_field.add(m_level, pixel);
        m_keys[pixel] = kInBand;
    }

    // --- Rings

    /// Settles the pixels of the band that lie within the next ring. Returns how many.
    std::int64_t floodRing() {
        int* const bandEnd = m_field.listEnd(m_level);
        if (m_ringEnd > kLargestDistance) bringDistancesDown(bandEnd);
        int* kept = bandEnd - m_band <= kFew ? floodFew(bandEnd) : floodMany(bandEnd);
        const std::int64_t settled = bandEnd - kept;
        ++m_ringsOfOneLabel;
        // What joined the band meanwhile.
        const int* const end = m_field.listEnd(m_level);
        for (const int* pixel = bandEnd; pixel != end; ++pixel) *kept++ = *pixel;
        m_field.setListEnd(m_level, kept);
        return settled;
    }

    /// If all that the band depends on is of one label, so is all that it leads to on this level,
    /// whatever the distances.
    std::int64_t fill() {
        const int* pixel = m_band;
        for (; pixel != m_field.listEnd(m_level); ++pixel) {
            m_keys[*pixel] = m_ringLabel;
            addOpenNeighbours(*pixel);
        }
        m_field.setListEnd(m_level, m_band);
        return pixel - m_band;
    }

    /// Both settle what lies within the ring and return the end of what they keep in the band, in
    /// its order, so that pixels beside each other stay so in the list.
    int* floodMany(const int* bandEnd) {
        m_ringEnd += kLeastAdvance;
        int* kept = m_band;
        for (const int* pixel = m_band; pixel != bandEnd;) {
            const Front front = frontAt(pixel, bandEnd);
            int within[Front::kMost];
            Distance arrivals[Front::kMost];
            Key labels[Front::kMost];
            m_frontRows.arrive(m_keys, m_distances, m_stride, front, arrivals, labels);
            int count = 0;
            for (int i = 0; i < front.count; ++i, ++pixel) {
                const bool isWithin = arrivals[i] < m_ringEnd;
                *kept = within[count] = *pixel;
                arrivals[count] = arrivals[i];
                labels[count] = labels[i];
                count += isWithin ? 1 : 0;
                kept += isWithin ? 0 : 1;
            }
            for (int i = 0; i < count; ++i) settle(within[i], arrivals[i], labels[i]);
            addOpenNeighbours(within, within + count, m_level);
        }
        return kept;
    }

    void settle(int pixel, int arrival, Key label) {
        m_keys[pixel] = label;
        m_distances[pixel] = static_cast<Distance>(arrival);
        m_ringsOfOneLabel = label != m_ringLabel ? -1 : m_ringsOfOneLabel;  // without this ring
        m_ringLabel = label;
    }

    /// Long paths end where the numbers do: only what the band depends on still counts, and moves
    /// down.
    void bringDistancesDown(const int* bandEnd) {
        const int shift = m_ringEnd - kRecentRings * kLeastAdvance;
        for (const int* pixel = m_band; pixel != bandEnd; ++pixel)
            for (const std::ptrdiff_t row : {-m_stride, std::ptrdiff_t{0}, m_stride})
                for (const int column : {-1, 0, 1}) {
                    Distance& distance = m_distances[*pixel + row + column];
                    if (distance >= shift && distance < m_ringEnd)
                        distance = static_cast<Distance>(distance - shift);
                }
        m_ringEnd -= shift;
    }

    // --- A few pixels: one after the other, without what is closed

    /// The ring begins with the first of a few pixels, so that each is worked out about once.
    int* floodFew(const int* bandEnd) {
        std::array<Arrivals, kFew> arrivals;
        const auto count = static_cast<std::size_t>(bandEnd - m_band);
        int first = kNone;
        for (std::size_t i = 0; i < count; ++i) {
            arrivals[i] = arrivalsAt(m_band[i]);
            first = std::min(first, arrivals[i].first);
        }
        m_ringEnd = first + kLeastAdvance;
        int* kept = m_band;
        for (std::size_t i = 0; i < count; ++i) {
            const int pixel = m_band[i];
            if (arrivals[i].first >= m_ringEnd) {
                *kept++ = pixel;
            } else {
                settle(pixel, arrivals[i].first, labelOf(pixel, arrivals[i]));
                addOpenNeighbours(pixel);
            }
        }
        return kept;
    }

    void addOpenNeighbours(int pixel) {
        const int level = m_level;
        int* listEnd = m_field.listEnd(level);
        const auto add = [&](int neighbour) {
            Key& key = m_keys[neighbour];
            const int height = key - kFreeKey;
            if (height < 0 || height > level) return;
            *listEnd++ = neighbour;
            key = kInBand;
        };
        const auto stride = static_cast<int>(m_stride);
        add(pixel - stride);
        add(pixel - 1);
        add(pixel + 1);
        add(pixel + stride);
        add(pixel - stride - 1);
        add(pixel - stride + 1);
        add(pixel + stride - 1);
        add(pixel + stride + 1);
        m_field.setListEnd(level, listEnd);
    }

    /// When a pixel is reached over each of its sides, and over the first of them.
    struct Arrivals {
        std::array<int, 4> over;
        int first;
    };

    Arrivals arrivalsAt(int pixel) const {
        const Distance* const above = m_distances + pixel - m_stride;
        const Distance* const row = m_distances + pixel;
        const Distance* const below = m_distances + pixel + m_stride;
        const auto over = [](Distance side, Distance corner, Distance otherCorner) {
            const Distance earlier = std::min(corner, otherCorner);
            // Most sides are closed, and it is easily foreseen which.
            return (side & earlier) == kNone ? int{kNone} : arrival(side, earlier);
        };
        Arrivals result;
        result.over = {over(above[0], above[-1], above[1]), over(row[-1], above[-1], below[-1]),
                       over(row[1], above[1], below[1]), over(below[0], below[-1], below[1])};
        result.first = std::min(std::min(result.over[0], result.over[1]),
                                std::min(result.over[2], result.over[3]));
        return result;
    }

    /// The smallest of the labels that arrive first.
    Key labelOf(int pixel, const Arrivals& arrivals) const {
        Key label = kLabelMask;
        const auto arrive = [&](std::size_t i, std::ptrdiff_t side, std::ptrdiff_t along) {
            if (arrivals.over[i] == arrivals.first)
                label = std::min(label, arrivingLabel(pixel + side, along));
        };
        arrive(0, -m_stride, 1);
        arrive(1, -1, m_stride);
        arrive(2, 1, m_stride);
        arrive(3, m_stride, 1);
        return label;
    }

    /// The label that arrives over a side: the side's own or that of the earlier corner.
    Key arrivingLabel(std::ptrdiff_t side, std::ptrdiff_t along) const {
        const std::ptrdiff_t one = side - along;
        const std::ptrdiff_t other = side + along;
        const int oneDistance = m_distances[one];
        const int otherDistance = m_distances[other];
        if (m_distances[side] - std::min(oneDistance, otherDistance) <= kLargestLeadOfSide)
            return m_keys[side];
        if (oneDistance != otherDistance) return m_keys[oneDistance < otherDistance ? one : other];
        return std::min(m_keys[one], m_keys[other]);
    }

    FloodField m_field;
    const FrontRows& m_frontRows;
    Key* m_keys;
    std::ptrdiff_t m_stride;
    Distance* m_distances;
    std::array<int, 8> m_offsets;
    int m_level = 0;
    int* m_band = nullptr;
    int m_ringEnd = 0;
    int m_ringsOfOneLabel = 0;
    Key m_ringLabel = 0;
};

}  // namespace

void floodByMarching(const FloodPlanes& planes, const WatershedRows& rows,
                     const FrontRows& frontRows, unsigned char* scratch) {
    MarchingFlood(planes, rows, frontRows, scratch).run();
}

}  // namespace numeric
