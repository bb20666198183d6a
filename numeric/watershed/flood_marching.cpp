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
/// they are reached is known beforehand. After them comes the band, the pixels beside settled ones
/// whose level has come. For each ring all of them are worked out, and those that lie within the
/// ring are settled. Since every neighbour of what was flooded before is in the first ring, the
/// band depends on distances of this level alone.
class MarchingFlood {
public:
    MarchingFlood(const FloodPlanes& planes, const WatershedRows& rows, unsigned char* scratch)
        : MarchingFlood(planes, rows, ScratchLayout(scratch)) {}

    void run() {
        m_field.flood([this](int level) {
            m_level = level;
            return floodLevel();
        });
    }

private:
    using Key = FloodKey;
    using Distance = std::uint16_t;
    // Keys of reached pixels. Those that wait are reached over a side or a corner by the label that
    // is added; a side comes before any corner. No label is added for pixels of the band.
    static constexpr int kBySide = 0x0100;
    static constexpr int kByCorner = 0x0200;
    static constexpr int kInBand = 0x0100;
    static constexpr int kLabelBits = 8;
    static constexpr int kLabel = (1 << kLabelBits) - 1;

    static constexpr Distance kNone = FloodField::kNoDistance;
    static constexpr int kLargestDistance = 0xF000;
    /// A pixel in the band depends on no ring older than these.
    static constexpr int kRecentRings = 3;
    static constexpr int kLookAhead = 12;
    /// So few pixels in the band are fronts in corridors, and their next steps easily foreseen.
    static constexpr int kFew = 8;

    MarchingFlood(const FloodPlanes& planes, const WatershedRows& rows, ScratchLayout layout)
        : m_field(planes, rows, FloodField::Distances::Kept, layout),
          m_keys(m_field.keys()),
          m_stride(m_field.stride()),
          m_distances(m_field.distances()) {
        std::fill_n(m_distances + m_stride, m_field.cells() - m_stride, kNone);
    }

    std::int64_t floodLevel() {
        const auto [room, seeds, waiting, end] = m_field.openLevel(m_level);
        m_field.setListEnd(m_level, room);
        expand<Kind::Seeds>(seeds, waiting);
        m_band = m_field.listEnd(m_level);
        settleFirstRing(waiting, end);
        settleFirstRing(room, m_band);
        std::int64_t settled = (end - waiting) + (m_band - room);
        expand<Kind::Many>(waiting, end);
        expand<Kind::Many>(room, m_band);
        m_ringEnd = 2 * kLeastAdvance;
        m_ringsOfOneLabel = 0;
        while (m_field.listEnd(m_level) != m_band)
            settled += m_ringsOfOneLabel < kRecentRings ? floodRing() : fill();
        return settled;
    }

    void settleFirstRing(const int* begin, const int* end) {
        for (const int* pixel = begin; pixel != end; ++pixel) {
            if (end - pixel > kLookAhead) {
                __builtin_prefetch(m_keys + pixel[kLookAhead], 1);
                __builtin_prefetch(m_distances + pixel[kLookAhead], 1);
            }
            Key& key = m_keys[*pixel];
            m_distances[*pixel] = key < kByCorner ? kSideDistance : kCornerDistance;
            key &= kLabel;
        }
    }

    enum class Kind { Seeds, Few, Many };

    template <Kind kKind>
    void expand(const int* begin, const int* end) {
        for (const int* pixel = begin; pixel != end; ++pixel) {
            if (end - pixel > kLookAhead) fetchAround(m_keys + pixel[kLookAhead]);
            expand<kKind>(*pixel);
        }
    }

    /// Lets a pixel reach its neighbours. Those of the seeds are of the first ring.
    template <Kind kKind>
    void expand(int pixel) {
        Key* const key = m_keys + pixel;
        const int label = *key;
        const int level = m_level;
        const auto reach = [&](Key* neighbour, int reached) {
            if (*neighbour <= reached) return;
            if (*neighbour >= kFreeKey) {
                const int relief = *neighbour - kFreeKey;
                const int next = static_cast<int>(neighbour - m_keys);
                if (kKind == Kind::Few && relief <= level) {
                    m_field.add(level, next);
                    *neighbour = kInBand;
                    return;
                }
                m_field.add(std::max(relief, level), next);
                if (kKind == Kind::Many && relief <= level) reached = kInBand;
            }
            *neighbour = static_cast<Key>(reached);
        };
        Key* const above = key - m_stride;
        Key* const below = key + m_stride;
        reach(above, kBySide + label);
        reach(key - 1, kBySide + label);
        reach(key + 1, kBySide + label);
        reach(below, kBySide + label);
        reach(above - 1, kByCorner + label);
        reach(above + 1, kByCorner + label);
        reach(below - 1, kByCorner + label);
        reach(below + 1, kByCorner + label);
    }

    // The pixels of a level lie all over the plane: their surroundings are asked for in time.
    template <class Number>
    void fetchAround(const Number* pixel) const {
        __builtin_prefetch(pixel - m_stride);
        __builtin_prefetch(pixel);
        __builtin_prefetch(pixel + m_stride);
    }

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
            expand<Kind::Few>(*pixel);
        }
        m_field.setListEnd(m_level, m_band);
        return pixel - m_band;
    }

    /// Both settle what lies within the ring and return the end of what they keep in the band, in
    /// its order, so that pixels beside each other stay so in the list.
    int* floodMany(const int* bandEnd) {
        m_ringEnd += kLeastAdvance;
        int* kept = m_band;
        for (const int* pixel = m_band; pixel != bandEnd; ++pixel) {
            if (bandEnd - pixel > kLookAhead) {
                fetchAround(m_keys + pixel[kLookAhead]);
                fetchAround(m_distances + pixel[kLookAhead]);
            }
            const Arrivals arrivals = arrivalsAt<Kind::Many>(*pixel);
            if (arrivals.first >= m_ringEnd) {
                *kept++ = *pixel;
            } else {
                settle(*pixel, arrivals);
                expand<Kind::Many>(*pixel);
            }
        }
        return kept;
    }

    /// The ring begins with the first of a few pixels, so that each is worked out about once.
    int* floodFew(const int* bandEnd) {
        std::array<Arrivals, kFew> arrivals;
        const auto count = static_cast<std::size_t>(bandEnd - m_band);
        int first = kNone;
        for (std::size_t i = 0; i < count; ++i) {
            arrivals[i] = arrivalsAt<Kind::Few>(m_band[i]);
            first = std::min(first, arrivals[i].first);
        }
        m_ringEnd = first + kLeastAdvance;
        int* kept = m_band;
        for (std::size_t i = 0; i < count; ++i) {
            const int pixel = m_band[i];
            if (arrivals[i].first >= m_ringEnd) {
                *kept++ = pixel;
            } else {
                settle(pixel, arrivals[i]);
                expand<Kind::Few>(pixel);
            }
        }
        return kept;
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

    /// When a pixel is reached over each of its sides, and over the first of them.
    struct Arrivals {
        std::array<int, 4> over;
        int first;
    };

    template <Kind kKind>
    Arrivals arrivalsAt(int pixel) const {
        const Distance* const above = m_distances + pixel - m_stride;
        const Distance* const row = m_distances + pixel;
        const Distance* const below = m_distances + pixel + m_stride;
        const auto over = [](Distance side, Distance corner, Distance otherCorner) {
            const Distance earlier = std::min(corner, otherCorner);
            // In a corridor most sides are closed, and it is easily foreseen which.
            if (kKind == Kind::Few && (side & earlier) == kNone) return int{kNone};
            return arrival(side, earlier);
        };
        Arrivals result;
        result.over = {over(above[0], above[-1], above[1]), over(row[-1], above[-1], below[-1]),
                       over(row[1], above[1], below[1]), over(below[0], below[-1], below[1])};
        result.first = std::min(std::min(result.over[0], result.over[1]),
                                std::min(result.over[2], result.over[3]));
        return result;
    }

    /// Settles a pixel with the smallest of the labels that arrive first.
    void settle(int pixel, const Arrivals& arrivals) {
        Key label = kLabel;
        const auto arrive = [&](int i, std::ptrdiff_t side, std::ptrdiff_t along) {
            if (arrivals.over[i] == arrivals.first)
                label = std::min(label, arrivingLabel(pixel + side, along));
        };
        arrive(0, -m_stride, 1);
        arrive(1, -1, m_stride);
        arrive(2, 1, m_stride);
        arrive(3, m_stride, 1);
        m_keys[pixel] = label;
        m_distances[pixel] = static_cast<Distance>(arrivals.first);
        if (label != m_ringLabel) {
            m_ringLabel = label;
            m_ringsOfOneLabel = -1;  // without this ring
        }
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
    Key* m_keys;
    std::ptrdiff_t m_stride;
    Distance* m_distances;
    int m_level = 0;
    int* m_band = nullptr;
    int m_ringEnd = 0;
    int m_ringsOfOneLabel = 0;
    Key m_ringLabel = 0;
};

}  // namespace

void floodByMarching(const FloodPlanes& planes, const WatershedRows& rows, unsigned char* scratch) {
    MarchingFlood(planes, rows, scratch).run();
}

}  // namespace numeric
