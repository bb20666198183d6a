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
template <int kNeighbours>
class StepFlood {
public:
    StepFlood(const FloodPlanes& planes, const FloodRows& rows, unsigned char* scratch)
        : StepFlood(planes, rows, ScratchLayout(scratch)) {}

    void run() {
        m_field.flood([this](int level) {
            m_level = level;
            return floodLevel();
        });
    }

private:
    using Key = FloodKey;
    /// The key of a pixel that has been reached, without the label.
    static constexpr int kReached = 0x0100;
    static constexpr int kLookAhead = 12;
    /// So few pixels in a ring are fronts in corridors, and their next steps easily foreseen.
    static constexpr int kFew = 8;

    StepFlood(const FloodPlanes& planes, const FloodRows& rows, ScratchLayout layout)
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
        if (end - begin > kFew) return expandMany(begin, end);
        int* listEnd = m_field.listEnd(m_level);
        for (const int* pixel = begin; pixel != end; ++pixel) expand<Kind::Few>(*pixel, listEnd);
        m_field.setListEnd(m_level, listEnd);
    }

    void expandMany(const int* begin, const int* end) {
        for (const int* pixel = begin; pixel != end; ++pixel) {
            if (end - pixel > kLookAhead) fetchAround(pixel[kLookAhead]);
            int* none = nullptr;
            expand<Kind::Many>(*pixel, none);
        }
    }

    /// All that a ring of a single pixel leads to on this level is of its label. Returns the end of
    /// the level's pixels.
    const int* fill(const int* ring) {
        int* listEnd = m_field.listEnd(m_level);
        for (; ring != listEnd; ++ring) expand<Kind::Fill>(*ring, listEnd);
        return ring;
    }

    enum class Kind { Few, Many, Fill };

    template <Kind kKind>
    void expand(int pixel, int*& listEnd) {
        const int level = m_level;
        const Key label = m_keys[pixel];
        const Key reached = static_cast<Key>(kReached + label);
        forEachNeighbour(m_keys + pixel, [&](Key* neighbour) {
            const Key key = *neighbour;
            if (key <= reached) return;
            if (key >= kFreeKey) {
                const int next = static_cast<int>(neighbour - m_keys);
                // An address that hangs on a key would hold up all that is read after it; of many
                // pixels a branch would often be foreseen wrongly.
                if (kKind != Kind::Many && key <= kFreeKey + level) {
                    *listEnd++ = next;
                    *neighbour = kKind == Kind::Fill ? label : reached;
                    return;
                }
                m_field.add(std::max(key - kFreeKey, level), next);
            }
            *neighbour = reached;
        });
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
