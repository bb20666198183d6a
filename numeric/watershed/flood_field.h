#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "numeric/base/scratch.h"
#include "numeric/watershed/flood.h"

namespace numeric {

/// What all floods work on: a key for every pixel, and the pixels in their order.
///
/// Pixels are numbered row by row in a grid with a rim of one pixel, so that every pixel has eight
/// neighbours.
///
/// Every level has a list, the seeds of the level before the pixels that wait for it. All lists lie
/// in one array, each with as much room as there are pixels of that relief. A level that is being
/// flooded uses the room of all levels up to its own, which is enough for all pixels it may flood.
class FloodField {
public:
    static constexpr std::uint16_t kNoDistance = 0xFFFF;

    /// The distances, if any are kept, have the rim's last row of keys for their first.
    enum class Distances { None, Kept };
    FloodField(const FloodPlanes& planes, const WatershedRows& rows, Distances distances,
               ScratchLayout& layout);

    std::ptrdiff_t stride() const { return m_stride; }
    std::int64_t cells() const { return m_stride * (std::int64_t{m_planes.height()} + 2); }
    FloodKey* keys() const { return m_keys; }
    /// As many as there are keys, with the same numbers; not reached, as the rim, is kNoDistance.
    std::uint16_t* distances() const {
        return reinterpret_cast<std::uint16_t*>(m_keys) + cells() - m_stride;
    }

    /// The lowest level of a free pixel, where the flood begins with all seeds up to it; and the
    /// highest.
    int lowestLevel() const { return m_free.lowest; }
    int highestLevel() const { return m_free.highest; }

    /// Floods level by level and writes the labels into the marker. floodLevel(level) returns how
    /// many pixels it gave a label. seedsListed() is called once, before any.
    template <class SeedsListed, class FloodLevel>
    void flood(SeedsListed seedsListed, FloodLevel floodLevel) {
        if (m_free.count == 0) return;
        // No free pixel lies higher, so seeds above wait until the others have done what they can.
        listSeeds(m_free.lowest, m_free.highest);
        seedsListed();
        floodLevels(m_free.lowest, m_free.highest, floodLevel);
        if (m_free.count > 0 && m_free.highest + 1 < kReliefLevels) {
            listSeeds(m_free.highest + 1, kReliefLevels - 1);
            floodLevels(m_free.highest + 1, kReliefLevels - 1, floodLevel);
        }
        readLabels();
    }

    /// A level's seeds and the pixels that wait for it, at the end of the room of levels up to it.
    struct Opened {
        int* room;
        int* seeds;
        int* waiting;
        int* end;
    };
    Opened openLevel(int level);

    /// The end of a level's list.
    int* listEnd(int level) const { return m_listEnds[level]; }
    void setListEnd(int level, int* end) { m_listEnds[level] = end; }
    void add(int level, int pixel) { *m_listEnds[level]++ = pixel; }

private:
    int pixel(int x, int y) const { return static_cast<int>((y + 1) * m_stride + x + 1); }
    void prepareKeys();
    void makeRoom();
    template <class FloodLevel>
    void floodLevels(int firstLevel, int lastLevel, FloodLevel floodLevel) {
        for (int level = firstLevel; m_free.count > 0 && level <= lastLevel; ++level)
            m_free.count -= floodLevel(level);
    }
    /// Lists the seeds that have free neighbours and lie no higher than lastLevel; those below
    /// firstLevel as its own.
    void listSeeds(int firstLevel, int lastLevel);
    void readLabels() const;

    FloodPlanes m_planes;
    const WatershedRows& m_rows;
    std::ptrdiff_t m_stride;
    FloodKey* m_keys;
    FreePixels m_free{0, kReliefLevels, -1};
    std::array<int*, kReliefLevels + 1> m_rooms{};
    std::array<int*, kReliefLevels> m_listEnds{};
    std::array<int*, kReliefLevels> m_seedsEnds{};
};

}  // namespace numeric
