#include "numeric/flood_sweeps.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "numeric/scratch.h"

namespace numeric {
namespace {

/// Sweeps over rows of keys. The keys only ever get smaller, until each is what arrives from its
/// neighbours; that state is unique, so it is the flood's.
class Sweeps {
public:
    Sweeps(const FloodPlanes& planes, const SweepRows& rows, const SweepOrder& order,
           ScratchLayout layout)
        : m_planes(planes),
          m_rows(rows),
          m_order(order),
          m_stride((planes.width() + kSweepMargin - 1) / kSweepMargin * kSweepMargin +
                   2 * kSweepMargin),
          m_keys(layout.take<SweepKey>(m_stride * (std::int64_t{planes.height()} + 2))),
          m_free(layout.take<unsigned char>(m_stride * std::int64_t{planes.height()})),
          m_fromAbove(layout.take<unsigned char>(std::int64_t{planes.height()} + 2) + 1),
          m_fromBelow(layout.take<unsigned char>(std::int64_t{planes.height()} + 2) + 1),
          m_unsettled(layout.take<unsigned char>(std::int64_t{planes.height()} + 2) + 1),
          m_size(layout.used()) {}

    std::int64_t size() const { return m_size; }

    bool run() {
        const int freeLevel = findFreeLevel();
        if (freeLevel < 0) return true;
        if (!prepare(static_cast<unsigned char>(freeLevel)) || !converge()) return false;
        for (int y = 0; y < m_planes.height(); ++y)
            m_rows.readLabels(keys(y), m_highLabel, m_planes.marker.row(y), m_planes.width());
        return true;
    }

private:
    SweepKey* keys(int y) const { return m_keys + m_stride * (std::int64_t{y} + 1) + kSweepMargin; }
    unsigned char* free(int y) const { return m_free + m_stride * std::int64_t{y} + kSweepMargin; }
    SweepRow row(int y) const {
        return {keys(y - 1), keys(y), keys(y + 1), free(y), m_planes.width()};
    }

    /// The level of the first free pixel, or -1.
    int findFreeLevel() const {
        for (int y = 0; y < m_planes.height(); ++y) {
            const unsigned char* marker = m_planes.marker.row(y);
            const unsigned char* end = marker + m_planes.width();
            const unsigned char* first = std::find(marker, end, 0);
            if (first != end) return m_planes.relief.row(y)[first - marker];
        }
        return -1;
    }

    /// Fills the rows. False if this is no plane for sweeps.
    bool prepare(unsigned char freeLevel) {
        const int width = m_planes.width();
        const std::int64_t rightMargin = m_stride - kSweepMargin - width;
        SweepKinds kinds{false, 255, 0};
        std::fill_n(keys(-1) - kSweepMargin, m_stride, kFarKey);
        std::fill_n(keys(m_planes.height()) - kSweepMargin, m_stride, kFarKey);
        for (int y = 0; y < m_planes.height(); ++y) {
            m_rows.prepare(m_planes.relief.row(y), m_planes.marker.row(y), width, freeLevel,
                           keys(y), free(y), &kinds);
            if (kinds.otherLevels || kinds.smallestHigh < kinds.largestHigh) return false;
            std::fill_n(keys(y) - kSweepMargin, kSweepMargin, kFarKey);
            std::fill_n(keys(y) + width, rightMargin, kFarKey);
            std::fill_n(free(y) - kSweepMargin, kSweepMargin, static_cast<unsigned char>(0));
            std::fill_n(free(y) + width, rightMargin, static_cast<unsigned char>(0));
        }
        m_highLabel = kinds.largestHigh;
        return true;
    }

    /// A sweep down and one up do most. Then every row is settled, and where that finds anything,
    /// its surroundings are swept and settled again. False if that takes too long.
    bool converge() {
        const int height = m_planes.height();
        for (unsigned char* flags : {m_fromAbove, m_fromBelow, m_unsettled})
            std::fill_n(flags - 1, height + 2, static_cast<unsigned char>(1));
        m_visitsLeft = std::int64_t{kVisitsPerRow} * height;
        sweepDown();
        sweepUp();
        for (unsigned char* flags : {m_fromAbove, m_fromBelow})
            std::fill_n(flags - 1, height + 2, static_cast<unsigned char>(0));
        while (settleRows() && m_visitsLeft > 0)
            while (m_visitsLeft > 0 && (sweepDown() | sweepUp())) {
            }
        return m_visitsLeft > 0 && !m_isLong;
    }

    bool sweepDown() {
        bool any = false;
        for (int y = 0; y < m_planes.height(); ++y)
            if (std::exchange(m_fromAbove[y], static_cast<unsigned char>(0)) != 0)
                any |= visit(y, m_order.relaxFromAbove(row(y)));
        return any;
    }

    bool sweepUp() {
        bool any = false;
        for (int y = m_planes.height() - 1; y >= 0; --y)
            if (std::exchange(m_fromBelow[y], static_cast<unsigned char>(0)) != 0)
                any |= visit(y, m_order.relaxFromBelow(row(y)));
        return any;
    }

    bool settleRows() {
        bool any = false;
        for (int y = 0; y < m_planes.height(); ++y) {
            if (std::exchange(m_unsettled[y], static_cast<unsigned char>(0)) == 0) continue;
            if (!visit(y, m_order.settle(row(y), &m_isLong))) continue;
            m_fromAbove[y] = m_fromBelow[y] = 1;
            any = true;
        }
        return any && !m_isLong;
    }

    /// Notes what a change of a row's keys means to its neighbours.
    bool visit(int y, bool changed) {
        --m_visitsLeft;
        if (changed) {
            m_fromAbove[y + 1] = m_fromBelow[y - 1] = 1;
            m_unsettled[y - 1] = m_unsettled[y] = m_unsettled[y + 1] = 1;
        }
        return changed;
    }

    static constexpr int kVisitsPerRow = 6;

    FloodPlanes m_planes;
    const SweepRows& m_rows;
    const SweepOrder& m_order;
    std::int64_t m_stride;
    SweepKey* m_keys;
    unsigned char* m_free;
    // Rows that have to be visited, with a spare flag before the first and behind the last.
    unsigned char* m_fromAbove;
    unsigned char* m_fromBelow;
    unsigned char* m_unsettled;
    std::int64_t m_size;
    std::int64_t m_visitsLeft = 0;
    bool m_isLong = false;
    unsigned char m_highLabel = 0;
};

}  // namespace

bool floodBySweeps(const FloodPlanes& planes, const SweepRows& rows, const SweepOrder& order,
                   unsigned char* scratch, int scratchSize) {
    if (Sweeps(planes, rows, order, {}).size() > scratchSize) return false;
    return Sweeps(planes, rows, order, ScratchLayout(scratch)).run();
}

}  // namespace numeric
