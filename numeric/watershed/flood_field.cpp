#include "numeric/watershed/flood_field.h"

#include <algorithm>

namespace numeric {

FloodField::FloodField(const FloodPlanes& planes, const WatershedRows& rows, Distances distances,
                       ScratchLayout& layout)
    : m_planes(planes),
      m_rows(rows),
      m_stride(std::ptrdiff_t{planes.width()} + 2),
      m_keys(layout.take<FloodKey>(
          cells() + (distances == Distances::Kept ? cells() - m_stride : kFloodKeySlack))) {
    m_rooms[0] = layout.take<int>(planes.pixels());
    prepareKeys();
    makeRoom();
}

void FloodField::makeRoom() {
    // Pixels beside each other often are of one level: they are counted in different places.
    constexpr int kCounters = 4;
    std::array<std::array<int, kReliefLevels>, kCounters> counts{};
    for (int y = 0; y < m_planes.height(); ++y) {
        const unsigned char* row = m_planes.relief.row(y);
        int x = 0;
        for (; x + kCounters <= m_planes.width(); x += kCounters)
            for (int i = 0; i < kCounters; ++i) ++counts[i][row[x + i]];
        for (; x < m_planes.width(); ++x) ++counts[0][row[x]];
    }
    for (int level = 0; level < kReliefLevels; ++level) {
        m_listEnds[level] = m_rooms[level];
        m_rooms[level + 1] = m_rooms[level];
        for (const auto& some : counts) m_rooms[level + 1] += some[level];
    }
}

void FloodField::prepareKeys() {
    const int width = m_planes.width();
    const int height = m_planes.height();
    std::fill_n(m_keys, m_stride, kRimKey);
    for (int y = 0; y < height; ++y) {
        FloodKey* keys = m_keys + pixel(0, y);
        m_rows.prepare(m_planes.relief.row(y), m_planes.marker.row(y), width, keys, &m_free);
        keys[-1] = keys[width] = kRimKey;
    }
    std::fill_n(m_keys + pixel(-1, height), m_stride, kRimKey);
}

void FloodField::listSeeds(int firstLevel, int lastLevel) {
    // The lists of the levels below are done with, or never begun.
    m_listEnds[firstLevel] = m_rooms[firstLevel] = m_rooms[0];
    for (int y = 0; y < m_planes.height(); ++y)
        m_rows.listSeeds(m_keys + pixel(0, y), m_stride, m_planes.relief.row(y), m_planes.width(),
                         firstLevel, lastLevel, pixel(0, y), m_listEnds.data());
    std::copy(m_listEnds.begin() + firstLevel, m_listEnds.begin() + lastLevel + 1,
              m_seedsEnds.begin() + firstLevel);
}

FloodField::Opened FloodField::openLevel(int level) {
    int* const end = m_rooms[level + 1];
    int* const seeds = std::copy_backward(m_rooms[level], m_listEnds[level], end);
    int* const waiting = seeds + (m_seedsEnds[level] - m_rooms[level]);
    return {m_rooms[0], seeds, waiting, end};
}

void FloodField::readLabels() const {
    for (int y = 0; y < m_planes.height(); ++y)
        m_rows.readLabels(m_keys + pixel(0, y), m_planes.marker.row(y), m_planes.width());
}

}  // namespace numeric
