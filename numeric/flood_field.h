#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "numeric/flood.h"
#include "numeric/flood_rows.h"
#include "numeric/scratch.h"

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
    static constexpr int kLevels = 256;

    FloodField(const FloodPlanes& planes, const FloodRows& rows, ScratchLayout& layout);

    std::ptrdiff_t stride() const { return m_stride; }
    std::int64_t cells() const { return m_stride * (std::int64_t{m_planes.height()} + 2); }
    FloodKey* keys() const { return m_keys; }
    const FreePixels& freePixels() const { return m_free; }

    /// Lists the seeds of these levels that have free neighbours.
    void listSeeds(int firstLevel, int lastLevel);

    /// A level's seeds and the pixels that wait for it, at the end of the room of levels up to it.
    struct Opened {
        int* room;
        const int* seeds;
        const int* waiting;
        const int* end;
    };
    Opened openLevel(int level);

    /// The end of a level's list.
    int* listEnd(int level) const { return m_listEnds[level]; }
    void setListEnd(int level, int* end) { m_listEnds[level] = end; }
    void add(int level, int pixel) { *m_listEnds[level]++ = pixel; }

    /// Writes the labels into the marker.
    void finish() const;

private:
    int pixel(int x, int y) const { return static_cast<int>((y + 1) * m_stride + x + 1); }
    void prepareKeys();
    void makeRoom();

    FloodPlanes m_planes;
    const FloodRows& m_rows;
    std::ptrdiff_t m_stride;
    FloodKey* m_keys;
    FreePixels m_free{0, -1};
    std::array<int*, kLevels + 1> m_rooms{};
    std::array<int*, kLevels> m_listEnds{};
    std::array<int*, kLevels> m_seedsEnds{};
};

}  // namespace numeric
