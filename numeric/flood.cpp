#include "numeric/flood.h"

#include <algorithm>
#include <cmath>

namespace numeric {

// With wave fronts: the front that passes an axis neighbour at a and the diagonal neighbour beside
// it, d earlier, arrives sqrt(1 - d^2) after a (the eikonal equation on the triangle between the
// three). From d = sqrt(1/2) on it comes straight from the diagonal neighbour. So a step is never
// shorter than sqrt(1/2), which is the width of a bucket.
Flood::Flood(std::uint32_t* keys, std::int32_t* queues, int width, int height, FloodOrder order)
    : m_keys(keys),
      m_stride(width + 1),
      m_lastRow((height - 1) * (width + 1)),
      m_cellCount(static_cast<std::int32_t>(keyCount(width, height))),
      m_order(order),
      m_bucketWidth(static_cast<std::uint32_t>(order.marching ? kPairs : order.axisCost)),
      m_rings{Ring{queues, width * height},
              Ring{queues + std::int64_t{width} * height, width * height}} {
    const double axis = order.axisCost;
    for (int d = 0; d < kPairs; ++d)
        m_pairCost[d] =
            static_cast<std::uint32_t>(std::lround(std::sqrt(std::max(0.0, axis * axis - d * d))));
    m_pairCost[kPairs] = m_pairCost[0];
    for (int y = 0; y <= height; ++y) m_keys[std::int64_t{y} * m_stride] = 0;
    m_seeds.fill(kChainEnd);
    m_waiting.fill(kChainEnd);
}

void Flood::chainSeed(int x, int y, unsigned char relief) {
    const std::int32_t index = y * m_stride + x + 1;
    m_keys[index] = kNotFlooded | static_cast<std::uint32_t>(m_seeds[relief]);
    m_seeds[relief] = index;
}

void Flood::run(int unlabelled, PlaneView<const unsigned char> marker) {
    const auto nextInChain = [&](std::int32_t index) {
        return static_cast<std::int32_t>(m_keys[index] & ~kNotFlooded);
    };
    m_unlabelled = unlabelled;
    for (m_level = 0; m_level < 256 && m_unlabelled > 0; ++m_level) {
        for (std::int32_t i = m_seeds[m_level], next; i != kChainEnd; i = next) {
            next = nextInChain(i);
            const int y = i / m_stride;
            startSeed(i, marker.row(y)[i - y * m_stride - 1]);
        }
        for (std::int32_t i = m_waiting[m_level], next; i != kChainEnd; i = next) {
            next = nextInChain(i);
            startWaiting(i);
        }
        if (m_order.marching)
            drain<true>();
        else
            drain<false>();
    }
}

template <class Visit>
inline void Flood::forNeighbours(std::int32_t i, Visit visit) const {
    const auto axis = static_cast<std::uint32_t>(m_order.axisCost);
    const auto diagonal = static_cast<std::uint32_t>(m_order.diagonalCost);
    visit(i - 1, axis);
    visit(i + 1, axis);
    for (const std::int32_t row :
         {hasAbove(i) ? i - m_stride : -1, hasBelow(i) ? i + m_stride : -1}) {
        if (row < 0) continue;
        visit(row, axis);
        if (diagonal == 0) continue;
        visit(row - 1, diagonal);
        visit(row + 1, diagonal);
    }
}

inline void Flood::enqueue(std::int32_t index, std::uint32_t moment) {
    const bool next = moment < m_moment + 2 * m_bucketWidth;
    m_rings[next ? 1 - m_current : m_current].push(index);
}

/// The pixel may be reached with this key. One above the level is chained to wait for its own.
inline void Flood::offer(std::int32_t index, std::uint32_t key) {
    const std::uint32_t before = m_keys[index];
    if (key >= before) return;
    if (before < kNotFlooded) {
        m_keys[index] = key;
        const std::uint32_t afterNext = m_moment + 2 * m_bucketWidth;
        if (momentOf(key) < afterNext && momentOf(before) >= afterNext)
            enqueue(index, momentOf(key));
    } else if (before >= kUnsetKey) {
        const std::uint32_t relief = before & 255;
        if (relief <= m_level) {
            m_keys[index] = key;
            --m_unlabelled;
            enqueue(index, momentOf(key));
        } else {
            m_keys[index] = kNotFlooded | static_cast<std::uint32_t>(m_waiting[relief]);
            m_waiting[relief] = index;
        }
    }
}

/// A seed whose level has come is part of the area from this moment.
void Flood::startSeed(std::int32_t index, unsigned char label) {
    const std::uint32_t key = m_moment << 8 | label;
    m_keys[index] = key;
    forNeighbours(index, [&](std::int32_t neighbour, std::uint32_t cost) {
        offer(neighbour, key + (cost << 8));
    });
}

/// A pixel whose level has come starts from those neighbours that were flooded before.
void Flood::startWaiting(std::int32_t index) {
    std::uint32_t earliest = kNotFlooded;
    forNeighbours(index, [&](std::int32_t neighbour, std::uint32_t cost) {
        const std::uint32_t key = m_keys[neighbour];
        const bool flooded = key != 0 && key < kNotFlooded && momentOf(key) <= m_moment;
        if (flooded) earliest = std::min(earliest, (m_moment + cost) << 8 | (key & 255));
    });
    m_keys[index] = earliest;
    --m_unlabelled;
    enqueue(index, momentOf(earliest));
}

template <bool Marching>
void Flood::drain() {
    while (m_rings[0].count + m_rings[1].count > 0) {
        m_current = 1 - m_current;
        m_moment += m_bucketWidth;
        if (m_moment > kLastMoment) rebaseMoments();
        Ring& ring = m_rings[m_current];
        for (int left = ring.count; left > 0; --left) {
            const std::int32_t index = ring.pop();
            const std::uint32_t key = m_keys[index];
            // A pixel that has moved to an earlier bucket is flooded already.
            if (momentOf(key) >= m_moment) spread<Marching>(index, key);
        }
    }
    m_moment += m_bucketWidth;
}

/// How much earlier `other` was reached than the pixel of `key`, if it may carry the front with it;
/// else 0.
inline int Flood::savingBetween(std::uint32_t key, std::uint32_t other) const {
    const std::uint32_t difference = key - other;
    // Rotated, so that different labels make the number large.
    const std::uint32_t earlier = difference >> 8 | difference << 24;
    return earlier < kPairs ? static_cast<int>(earlier) : 0;
}

template <bool Marching>
inline void Flood::spread(std::int32_t i, std::uint32_t key) {
    const bool above = hasAbove(i);
    const bool below = hasBelow(i);
    const std::int32_t up = i - m_stride;
    const std::int32_t down = i + m_stride;
    const auto axis = static_cast<std::uint32_t>(m_order.axisCost);
    std::uint32_t across = axis;  // to the left and right
    std::uint32_t along = axis;   // up and down
    if (Marching) {
        const int upSaving = above ? savingBetween(key, m_keys[up]) : 0;
        const int downSaving = below ? savingBetween(key, m_keys[down]) : 0;
        across = m_pairCost[std::max(upSaving, downSaving)];
        along = m_pairCost[std::max(savingBetween(key, m_keys[i - 1]),
                                    savingBetween(key, m_keys[i + 1]))];
    }
    const std::uint32_t acrossKey = key + (across << 8);
    const std::uint32_t alongKey = key + (along << 8);
    const std::uint32_t diagonalKey = key + (static_cast<std::uint32_t>(m_order.diagonalCost) << 8);
    const bool diagonals = m_order.diagonalCost != 0;
    offer(i - 1, acrossKey);
    offer(i + 1, acrossKey);
    if (above) {
        offer(up, alongKey);
        if (diagonals) {
            offer(up - 1, diagonalKey);
            offer(up + 1, diagonalKey);
        }
    }
    if (below) {
        offer(down, alongKey);
        if (diagonals) {
            offer(down - 1, diagonalKey);
            offer(down + 1, diagonalKey);
        }
    }
}

/// Moments have 23 bits: before they run out all are moved down. What was flooded long ago need
/// only stay long ago.
void Flood::rebaseMoments() {
    const std::uint32_t shift = (m_moment - kFirstMoment) << 8;
    for (std::int32_t i = 0; i < m_cellCount; ++i) {
        const std::uint32_t key = m_keys[i];
        if (key >= kNotFlooded) continue;
        m_keys[i] = key >= shift ? key - shift : key & 255;
    }
    m_moment = kFirstMoment;
}

template void Flood::drain<true>();
template void Flood::drain<false>();

}  // namespace numeric
