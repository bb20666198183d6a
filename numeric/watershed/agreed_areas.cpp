#include "numeric/watershed/agreed_areas.h"

#include <algorithm>
#include <utility>

namespace numeric {
namespace {

/// Calls visit(k, bits) for the words of a mask with pixels start to end - 1, and their bits.
template <class Visit>
void forEachWord(int start, int end, Visit visit) {
    const int last = (end - 1) / kWordBits;
    BitWord bits = ~BitWord{0} << start % kWordBits;
    for (int k = start / kWordBits; k < last; ++k) {
        visit(k, bits);
        bits = ~BitWord{0};
    }
    visit(last, bits & (~BitWord{0} >> (kWordBits - 1 - (end - 1) % kWordBits)));
}

}  // namespace

/// Lists a row's runs. Returns the number past the last.
int AgreedAreas::listRuns(const BitWord* low, int words, int width, int firstRun) {
    Run* run = m_runs + firstRun;
    bool isInside = false;
    for (int k = 0; k < words; ++k) {
        // A run starts or ends where a pixel differs from the one before.
        BitWord edges = low[k] ^ (low[k] << 1 | BitWord{isInside});
        for (; edges != 0; edges &= edges - 1) {
            const int x = k * kWordBits + __builtin_ctzll(edges);
            if (isInside)
                run++->end = x;
            else
                run->start = x;
            isInside = !isInside;
        }
    }
    if (isInside) run++->end = width;
    const int endRun = static_cast<int>(run - m_runs);
    std::fill(m_areas + firstRun, m_areas + endRun, ~kNoSeed);
    return endRun;
}

/// Adds a row's seeds to what is known of its runs, each of which still is an area of its own.
void AgreedAreas::noteSeeds(const BitWord* free, const BitWord* low, int words,
                            const unsigned char* marker, int firstRun) {
    int run = firstRun;
    for (int k = 0; k < words; ++k)
        for (BitWord seeds = low[k] & ~free[k]; seeds != 0; seeds &= seeds - 1) {
            const int x = k * kWordBits + __builtin_ctzll(seeds);
            while (m_runs[run].end <= x) ++run;
            m_areas[run] = ~both(~m_areas[run], marker[x]);
        }
}

/// The first run of a run's area.
int AgreedAreas::areaOf(int run) {
    while (m_areas[run] >= 0) {
        const int earlier = m_areas[run];
        if (m_areas[earlier] >= 0) m_areas[run] = m_areas[earlier];
        run = earlier;
    }
    return run;
}

void AgreedAreas::unite(int run, int other) {
    int first = areaOf(run), second = areaOf(other);
    if (first == second) return;
    if (first > second) std::swap(first, second);
    m_areas[first] = ~both(~m_areas[first], ~m_areas[second]);
    m_areas[second] = first;
}

/// Unites the runs of a row, from lowerRun on, with those of the row above that they touch.
void AgreedAreas::uniteRows(int upperRun, int lowerRun, int endRun, int reach) {
    int upper = upperRun, lower = lowerRun;
    while (upper < lowerRun && lower < endRun) {
        const Run above = m_runs[upper], below = m_runs[lower];
        if (above.start < below.end + reach && below.start < above.end + reach) unite(upper, lower);
        // Only the one that reaches farther may touch another one.
        if (above.end < below.end)
            ++upper;
        else
            ++lower;
    }
}

bool AgreedAreas::areMostlyDiffering(int runs) {
    int differing = 0;
    for (int run = 0; run < runs; ++run) differing += ~m_areas[areaOf(run)] == kDiffering ? 1 : 0;
    return differing > runs / 4 * 3;
}

void AgreedAreas::label(PlaneView<unsigned char> marker, Neighbours neighbours,
                        unsigned char highLabel, const Masks& masks) {
    const int words = masks.words;
    const auto rowOf = [words](BitWord* mask, int y) { return mask + std::int64_t{words} * y; };
    m_firstRuns[0] = 0;
    int trial = kFirstTrial;
    for (int y = 0; y < marker.height; ++y) {
        const BitWord* const low = rowOf(masks.low, y);
        const int firstRun = m_firstRuns[y];
        m_firstRuns[y + 1] = listRuns(low, words, marker.width, firstRun);
        noteSeeds(rowOf(masks.free, y), low, words, marker.row(y), firstRun);
        uniteRows(m_firstRuns[std::max(0, y - 1)], firstRun, m_firstRuns[y + 1],
                  neighbours == Neighbours::Eight ? 1 : 0);
        if (m_firstRuns[y + 1] > trial) {
            if (areMostlyDiffering(m_firstRuns[y + 1])) return;
            trial *= 2;
        }
    }
    for (int y = 0; y < marker.height; ++y)
        for (int run = m_firstRuns[y]; run < m_firstRuns[y + 1]; ++run) {
            // Runs before this one have their area's seeds by now.
            if (m_areas[run] >= 0) m_areas[run] = m_areas[m_areas[run]];
            const int seeds = ~m_areas[run];
            if (seeds == kDiffering) continue;
            const auto [start, end] = m_runs[run];
            std::fill(marker.row(y) + start, marker.row(y) + end,
                      seeds == kNoSeed ? highLabel : static_cast<unsigned char>(seeds));
            forEachWord(start, end, [&](int k, BitWord bits) {
                rowOf(masks.free, y)[k] &= ~bits;
                rowOf(masks.low, y)[k] &= ~bits;
            });
        }
}

}  // namespace numeric
