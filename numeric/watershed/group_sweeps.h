#pragma once

#include <algorithm>
#include <cstdint>

#include "numeric/base/scratch.h"
#include "numeric/watershed/group_bits.h"

namespace numeric {

/// A row of bits for each row of a plane, with a spare row before the first and behind the last.
class GroupBitRows {
public:
    GroupBitRows(int words, int height, ScratchLayout& layout)
        : m_words(words),
          m_size(words * (std::int64_t{height} + 2)),
          m_bits(layout.take<GroupBits>(m_size)) {}

    GroupBits* row(int y) const { return m_bits + m_words * (std::int64_t{y} + 1); }
    void clear() const { std::fill_n(m_bits, m_size, GroupBits{0}); }

private:
    int m_words;
    std::int64_t m_size;
    GroupBits* m_bits;
};

/// Sweeps down and up over those groups of a plane whose neighbours have changed, until none is
/// left. Bands of rows are settled one after the other, since they stay in the cache.
class GroupSweeps {
public:
    /// reach: how far a change reaches into the rows above and below, 1 if over corners, or 0.
    /// visits: how often a group may be visited on the average.
    GroupSweeps(int groups, int height, int reach, int visits, ScratchLayout& layout)
        : m_groups(groups),
          m_words((groups + kBitsPerWord - 1) / kBitsPerWord),
          m_height(height),
          m_reach(reach),
          m_visits(visits),
          m_free(m_words, height, layout),
          m_fromAbove(m_words, height, layout),
          m_fromBelow(m_words, height, layout),
          m_line(layout.take<GroupBits>(m_words)) {}

    int words() const { return m_words; }
    GroupBits* free(int y) const { return m_free.row(y); }
    void clear() const {
        m_free.clear();
        m_fromAbove.clear();
        m_fromBelow.clear();
    }

    /// The groups of a row that have free pixels or touch such groups, over corners as well. Valid
    /// until the next call of any member.
    const GroupBits* needed(int y) const {
        spread(
            1,
            [&](int word) {
                return m_free.row(y - 1)[word] | m_free.row(y)[word] | m_free.row(y + 1)[word];
            },
            [&](int word, GroupBits bits) { m_line[word] = bits; });
        const int used = m_groups % kBitsPerWord;
        if (used != 0) m_line[m_words - 1] &= (GroupBits{1} << used) - 1;
        return m_line;
    }

    /// prepare(y) makes a row ready, with its free groups; false ends it all. relax(groups, y,
    /// neighbour) visits groups of row y from the row above or below and returns how many. Returns
    /// false as well if that takes too many visits: the ways are too winding for sweeps.
    template <class Prepare, class Relax>
    bool converge(Prepare prepare, Relax relax) {
        m_visitsLeft = 0;
        int prepared = 0;
        for (int begin = 0; begin < m_height; begin = bandEnd(begin)) {
            const int needed = std::min(bandEnd(begin) + 1, m_height);
            for (; prepared < needed; ++prepared) {
                if (!prepare(prepared)) return false;
                std::copy_n(m_free.row(prepared), m_words, m_fromAbove.row(prepared));
                std::copy_n(m_free.row(prepared), m_words, m_fromBelow.row(prepared));
            }
            sweepDown(begin, true, relax);
            sweepUp(begin, relax);
            settle(begin, relax);
            if (m_visitsLeft < 0) return false;
        }
        // What a band has changed in the one above it.
        const int last = (m_height - 1) / kBandRows * kBandRows;
        for (bool any = true; any && m_visitsLeft >= 0;) {
            any = false;
            for (int begin = last; begin >= 0; begin -= kBandRows) any |= settle(begin, relax);
            for (int begin = 0; begin <= last; begin += kBandRows) any |= settle(begin, relax);
        }
        return m_visitsLeft >= 0;
    }

private:
    static constexpr int kBandRows = 64;

    int bandEnd(int begin) const { return std::min(begin + kBandRows, m_height); }

    template <class Bits, class Put>
    void spread(int reach, Bits bits, Put put) const {
        constexpr int kTop = kBitsPerWord - 1;
        GroupBits before = 0;
        GroupBits own = bits(0);
        for (int word = 0; word < m_words; ++word) {
            const GroupBits next = word + 1 < m_words ? bits(word + 1) : 0;
            const GroupBits beside = own << 1 | own >> 1 | before >> kTop | next << kTop;
            before = own;
            put(word, reach > 0 ? own | beside : own);
            own = next;
        }
    }

    template <class Relax>
    bool settle(int begin, Relax relax) {
        bool anyEver = false;
        for (bool any = true; any && m_visitsLeft >= 0;) {
            any = sweepDown(begin, false, relax);
            any |= sweepUp(begin, relax);
            anyEver |= any;
        }
        return anyEver;
    }

    template <class Relax>
    bool sweepDown(int begin, bool isFirst, Relax relax) {
        bool any = false;
        for (int y = begin; y < bandEnd(begin); ++y)
            any |= visit(m_fromAbove, y, y - 1, isFirst, relax);
        return any;
    }

    template <class Relax>
    bool sweepUp(int begin, Relax relax) {
        bool any = false;
        for (int y = bandEnd(begin) - 1; y >= begin; --y)
            any |= visit(m_fromBelow, y, y + 1, false, relax);
        return any;
    }

    template <class Relax>
    bool visit(const GroupBitRows& visits, int y, int neighbour, bool isFirst, Relax relax) {
        GroupBits* const groups = visits.row(y);
        if (std::all_of(groups, groups + m_words, [](GroupBits bits) { return bits == 0; }))
            return false;
        const std::int64_t visited =
            relax(GroupRow{m_free.row(y), groups, m_line, m_words, isFirst}, y, neighbour);
        m_visitsLeft += isFirst ? visited * m_visits : -visited;
        spread(
            m_reach, [&](int word) { return m_line[word]; },
            [&](int word, GroupBits bits) {
                m_fromAbove.row(y + 1)[word] |= bits & m_free.row(y + 1)[word];
                m_fromBelow.row(y - 1)[word] |= bits & m_free.row(y - 1)[word];
            });
        return true;
    }

    int m_groups;
    int m_words;
    int m_height;
    int m_reach;
    int m_visits;
    GroupBitRows m_free;
    GroupBitRows m_fromAbove;
    GroupBitRows m_fromBelow;
    GroupBits* m_line;
    std::int64_t m_visitsLeft = 0;
};

}  // namespace numeric
