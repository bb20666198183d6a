#pragma once

#include <array>
#include <cstdint>

#include "numeric/views.h"
#include "numeric/watershed_rows.h"

namespace numeric {

/// How far a flood step is, in parts of the order's unit, and over which neighbours it goes.
struct FloodOrder {
    int axisCost;
    int diagonalCost;  ///< 0: four neighbours only
    bool marching;     ///< wave fronts may pass between an axis and a diagonal neighbour
};

/// A priority flood over keys: level by level of the relief, inside a level by distance from what
/// was flooded before, at the same distance by label.
///
/// A key is, for a flooded pixel or one in a queue, the moment of its arrival * 256 + label; so the
/// smaller of two keys is the earlier, and of the same moment the smaller label. Moments grow
/// through all levels. Of a pixel that nothing has reached it is kUnsetKey | relief; of one that is
/// chained to wait for its level, kNotFlooded | index of the next in the chain.
///
///        keys: rows of width + 1, each led by a cell of key 0 that nothing enters, one more behind
///
/// Pixels wait in buckets of moments so narrow that a pixel cannot delay another of its bucket:
/// every step is at least as far as a bucket is wide. A step reaches the next bucket or the one
/// after, so three are in use. A pixel is queued again only where it moves to an earlier bucket.
class Flood {
public:
    /// keys: keyCount(width, height) cells. queues: 2 * width * height cells.
    Flood(std::uint32_t* keys, std::int32_t* queues, int width, int height, FloodOrder order);

    static std::int64_t keyCount(int width, int height) {
        return (std::int64_t{width} + 1) * height + 1;
    }
    std::uint32_t* keyRow(int y) { return m_keys + std::int64_t{y} * m_stride + 1; }

    /// Takes a labelled pixel out of the flooded area until its level. Only for seeds that have
    /// room to grow; the others are part of the area from the start.
    void chainSeed(int x, int y, unsigned char relief);

    /// Floods until `unlabelled` pixels have got a label. marker: where the labels of chained seeds
    /// are.
    void run(int unlabelled, PlaneView<const unsigned char> marker);

private:
    static constexpr std::int32_t kChainEnd = 0x7FFFFEFF;  ///< no key of it equals an unset one
    static constexpr std::uint32_t kFirstMoment = 1024;
    static constexpr std::uint32_t kLastMoment = (1u << 23) - 1024;
    static constexpr int kPairs = 50;

    /// Buckets two apart share a ring: a pixel is never in both.
    struct Ring {
        std::int32_t* cells;
        int capacity;
        int head = 0;
        int tail = 0;
        int count = 0;

        void push(std::int32_t index) {
            cells[tail] = index;
            if (++tail == capacity) tail = 0;
            ++count;
        }
        std::int32_t pop() {
            const std::int32_t index = cells[head];
            if (++head == capacity) head = 0;
            --count;
            return index;
        }
    };

    std::uint32_t momentOf(std::uint32_t key) const { return key >> 8; }
    bool hasAbove(std::int32_t index) const { return index >= m_stride; }
    bool hasBelow(std::int32_t index) const { return index < m_lastRow; }

    template <class Visit>
    void forNeighbours(std::int32_t index, Visit visit) const;
    void offer(std::int32_t index, std::uint32_t key);
    void enqueue(std::int32_t index, std::uint32_t moment);
    void startSeed(std::int32_t index, unsigned char label);
    void startWaiting(std::int32_t index);
    template <bool Marching>
    void drain();
    template <bool Marching>
    void spread(std::int32_t index, std::uint32_t key);
    int savingBetween(std::uint32_t key, std::uint32_t other) const;
    void rebaseMoments();

    std::uint32_t* m_keys;
    std::int32_t m_stride;
    std::int32_t m_lastRow;  ///< index of the last row's first cell
    std::int32_t m_cellCount;
    FloodOrder m_order;
    std::uint32_t m_bucketWidth;
    std::uint32_t m_moment = kFirstMoment;  ///< where the bucket in hand begins
    std::uint32_t m_level = 0;
    int m_unlabelled = 0;
    std::array<Ring, 2> m_rings;
    int m_current = 0;  ///< ring of the bucket in hand and the one after next
    std::array<std::uint32_t, kPairs + 1> m_pairCost;
    std::array<std::int32_t, 256> m_seeds;
    std::array<std::int32_t, 256> m_waiting;
};

}  // namespace numeric
