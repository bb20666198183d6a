#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "numeric/flood.h"
#include "numeric/flood_field.h"
#include "numeric/scratch.h"

namespace numeric {
namespace {

/// Breadth-first flood from level to level, ring by ring.
///
/// A ring holds the pixels that are so many steps away from what was flooded before the level. A
/// pixel that has been reached may be reached again, with a smaller label, until the turn of its
/// ring or level comes. Then its label is final, and it reaches its neighbours.
template <int kNeighbours>
class StepFlood {
public:
    StepFlood(const FloodPlanes& planes, const FloodRows& rows, unsigned char* scratch)
        : StepFlood(planes, rows, ScratchLayout(scratch)) {}

    void run() {
        // No free pixel lies higher, so seeds above wait until the others have done what they can.
        const int highest = m_field.freePixels().highest;
        flood(0, highest);
        if (m_unreached > 0) flood(highest + 1, FloodField::kLevels - 1);
        m_field.finish();
    }

private:
    using Key = FloodKey;
    /// The key of a pixel that has been reached, without the label.
    static constexpr int kReached = 0x0100;
    static constexpr int kLookAhead = 12;
    /// So few pixels in a ring are fronts in corridors, and their next steps easily foreseen.
    static constexpr int kFew = 8;

    StepFlood(const FloodPlanes& planes, const FloodRows& rows, ScratchLayout layout)
        : m_field(planes, rows, layout),
          m_keys(m_field.keys()),
          m_stride(m_field.stride()),
          m_unreached(m_field.freePixels().count) {}

    void flood(int firstLevel, int lastLevel) {
        m_field.listSeeds(firstLevel, lastLevel);
        for (m_level = firstLevel; m_unreached > 0 && m_level <= lastLevel; ++m_level) floodLevel();
    }

    void floodLevel() {
        const auto [room, seeds, waiting, end] = m_field.openLevel(m_level);
        m_field.setListEnd(m_level, room);
        expand(seeds, waiting);
        int* ring = room;
        int* ringEnd = m_field.listEnd(m_level);
        settle(waiting, end);
        settle(ring, ringEnd);
        expand(waiting, end);
        while (true) {
            expand(ring, ringEnd);
            ring = ringEnd;
            ringEnd = m_field.listEnd(m_level);
            if (ring == ringEnd) break;
            settle(ring, ringEnd);
            if (ringEnd - ring == 1) *ring = followCorridor(*ring);
        }
        m_unreached -= (end - waiting) + (ringEnd - room);
    }

    /// Makes the labels of pixels that have been reached final.
    void settle(const int* begin, const int* end) {
        for (const int* pixel = begin; pixel != end; ++pixel) {
            if (end - pixel > kLookAhead) __builtin_prefetch(m_keys + pixel[kLookAhead], 1);
            m_keys[*pixel] -= kReached;
        }
    }

    /// Lets pixels reach their neighbours, which go to the level's list or wait for their own.
    void expand(const int* begin, const int* end) {
        if (end - begin <= kFew)
            expand<true>(begin, end);
        else
            expand<false>(begin, end);
    }

    template <bool kAreFew>
    void expand(const int* begin, const int* end) {
        const int level = m_level;
        int* ringEnd = m_field.listEnd(level);
        for (const int* pixel = begin; pixel != end; ++pixel) {
            if (!kAreFew && end - pixel > kLookAhead) fetchAround(pixel[kLookAhead]);
            const Key reached = static_cast<Key>(kReached + m_keys[*pixel]);
            forEachNeighbour(m_keys + *pixel, [&](Key* neighbour) {
                const Key key = *neighbour;
                if (key <= reached) return;
                if (key >= kFreeKey) {
                    const int next = static_cast<int>(neighbour - m_keys);
                    // An address that hangs on a key would hold up all that is read after it;
                    // of many pixels a branch would often be foreseen wrongly.
                    if (kAreFew && key <= kFreeKey + level)
                        *ringEnd++ = next;
                    else
                        m_field.add(std::max(key - kFreeKey, level), next);
                }
                *neighbour = reached;
            });
        }
        if (kAreFew) m_field.setListEnd(level, ringEnd);
    }

    // The pixels of a level lie all over the plane: their surroundings are asked for in time.
    void fetchAround(int pixel) const {
        const Key* key = m_keys + pixel;
        __builtin_prefetch(key - m_stride);
        __builtin_prefetch(key);
        __builtin_prefetch(key + m_stride);
    }

    /// Goes on from a pixel that is the only one of its ring, as long as it reaches a single one.
    /// Returns the last.
    int followCorridor(int pixel) {
        Key* key = m_keys + pixel;
        const Key label = *key;
        const Key reached = static_cast<Key>(kReached + label);
        std::ptrdiff_t step = 0;
        while (true) {
            int open = 0;
            forEachNeighbour(key,
                             [&](const Key* neighbour) { open += *neighbour > reached ? 1 : 0; });
            if (open != 1) break;
            if (key[step] <= reached)
                forEachNeighbour(key, [&](const Key* neighbour) {
                    if (*neighbour > reached) step = neighbour - key;
                });
            if (key[step] < kFreeKey || key[step] > kFreeKey + m_level) break;
            key += step;
            *key = label;
            --m_unreached;
        }
        return static_cast<int>(key - m_keys);
    }

    template <class Visit>
    void forEachNeighbour(Key* key, Visit visit) const {
        Key* const above = key - m_stride;
        Key* const below = key + m_stride;
        visit(above);
        visit(key - 1);
        visit(key + 1);
        visit(below);
        if constexpr (kNeighbours == 8) {
            visit(above - 1);
            visit(above + 1);
            visit(below - 1);
            visit(below + 1);
        }
    }

    FloodField m_field;
    Key* m_keys;
    std::ptrdiff_t m_stride;
    std::int64_t m_unreached;
    int m_level = 0;
};

}  // namespace

void floodBySteps(const FloodPlanes& planes, const FloodRows& rows, bool sidesOnly,
                  unsigned char* scratch) {
    if (sidesOnly)
        StepFlood<4>(planes, rows, scratch).run();
    else
        StepFlood<8>(planes, rows, scratch).run();
}

}  // namespace numeric
