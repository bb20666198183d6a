#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "numeric/base/scratch.h"
#include "numeric/watershed/flood.h"
#include "numeric/watershed/flood_field.h"

namespace numeric {
namespace {

/// Breadth-first flood from level to level, ring by ring.
///
/// A ring holds the pixels that are so many steps away from what was flooded before the level. A
/// pixel that has been reached may be reached again, with a smaller label, until the turn of its
/// ring or level comes. Then its label is final, and it reaches its neighbours.
template <Neighbours kNeighbours>
class StepFlood {
public:
    StepFlood(const FloodPlanes& planes, const WatershedRows& rows, unsigned char* scratch)
        : StepFlood(planes, rows, ScratchLayout(scratch)) {}

    void run() {
        m_field.flood([] {},
                      [this](int level) {
                          m_level = level;
                          return floodLevel();
                      });
    }

private:
    using Key = FloodKey;
    /// The key of a pixel that has been reached, without the label.
    static constexpr int kReached = 0x0100;
    static constexpr int kLookAhead = 12;

    StepFlood(const FloodPlanes& planes, const WatershedRows& rows, ScratchLayout layout)
        : m_field(planes, rows, FloodField::Distances::None, layout),
          m_keys(m_field.keys()),
          m_stride(m_field.stride()) {}

    std::int64_t floodLevel() {
        const auto [room, seeds, waiting, end] = m_field.openLevel(m_level);
        m_field.setListEnd(m_level, room);
        expand(seeds, waiting);
        const int* ring = room;
        const int* ringEnd = m_field.listEnd(m_level);
        settle(waiting, end);
        settle(ring, ringEnd);
        expand(waiting, end);
        do {
            expand(ring, ringEnd);
            ring = ringEnd;
            ringEnd = m_field.listEnd(m_level);
            settle(ring, ringEnd);
            if (ringEnd - ring == 1) ring = ringEnd = fill(ring);
        } while (ring != ringEnd);
        return (end - waiting) + (ringEnd - room);
    }

    /// Makes the labels of pixels that have been reached final.
    void settle(const int* begin, const int* end) {
        for (const int* pixel = begin; pixel != end; ++pixel) {
            if (end - pixel > kLookAhead) __builtin_prefetch(m_keys + pixel[kLookAhead], 1);
            m_keys[*pixel] = static_cast<Key>(m_keys[*pixel] - kReached);
        }
    }

    /// Lets pixels reach their neighbours, which go to the level's list or wait for their own.
    void expand(const int* begin, const int* end) {
        for (const int* pixel = begin; pixel != end; ++pixel) {
            if (end - pixel > kLookAhead) fetchAround(pixel[kLookAhead]);
            const Key reached = static_cast<Key>(kReached + m_keys[*pixel]);
            forEachNeighbour(m_keys + *pixel, [&](Key* neighbour) {
                const Key key = *neighbour;
                if (key <= reached) return;
                if (key >= kFreeKey)
                    m_field.add(std::max(key - kFreeKey, m_level),
                                static_cast<int>(neighbour - m_keys));
                *neighbour = reached;
            });
        }
    }

    /// All that a ring of a single pixel leads to on this level is of its label. Returns the end of
    /// the level's pixels.
    const int* fill(const int* ring) {
        int* listEnd = m_field.listEnd(m_level);
        for (; ring != listEnd; ++ring) {
            const Key label = m_keys[*ring];
            forEachNeighbour(m_keys + *ring, [&](Key* neighbour) {
                const Key key = *neighbour;
                if (key <= kReached + label) return;
                const int next = static_cast<int>(neighbour - m_keys);
                // An address that hangs on a key would hold up all that is read after it.
                if (key >= kFreeKey && key <= kFreeKey + m_level) {
                    *listEnd++ = next;
                    *neighbour = label;
                    return;
                }
                if (key >= kFreeKey) m_field.add(key - kFreeKey, next);
                *neighbour = static_cast<Key>(kReached + label);
            });
        }
        return ring;
    }

    // The pixels of a level lie all over the plane: their surroundings are asked for in time.
    void fetchAround(int pixel) const {
        const Key* key = m_keys + pixel;
        __builtin_prefetch(key - m_stride);
        __builtin_prefetch(key);
        __builtin_prefetch(key + m_stride);
    }

    template <class Visit>
    void forEachNeighbour(Key* key, Visit visit) const {
        Key* const above = key - m_stride;
        Key* const below = key + m_stride;
        visit(above);
        visit(key - 1);
        visit(key + 1);
        visit(below);
        if constexpr (kNeighbours == Neighbours::Eight) {
            visit(above - 1);
            visit(above + 1);
            visit(below - 1);
            visit(below + 1);
        }
    }

    FloodField m_field;
    Key* m_keys;
    std::ptrdiff_t m_stride;
    int m_level = 0;
};

}  // namespace

void floodBySteps(const FloodPlanes& planes, const WatershedRows& rows, Neighbours neighbours,
                  unsigned char* scratch) {
    if (neighbours == Neighbours::Four)
        StepFlood<Neighbours::Four>(planes, rows, scratch).run();
    else
        StepFlood<Neighbours::Eight>(planes, rows, scratch).run();
}

}  // namespace numeric
