#include "numeric/watershed/agreed_areas.h"

#include <algorithm>
#include <cstring>
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

int AgreedAreas::listRuns(const BitWord* mask, int words, int width, Run* runs) {
    Run* run = runs;
    bool isInside = false;
    for (int k = 0; k < words; ++k) {
        // A run starts or ends where a pixel differs from the one before.
        BitWord edges = mask[k] ^ (mask[k] << 1 | BitWord{isInside});
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
    return static_cast<int>(run - runs);
}

int AgreedAreas::seedsOf(const Run& run, const BitWord* free, const unsigned char* marker) {
    int seeds = kNoSeed;
    forEachWord(run.start, run.end, [&](int k, BitWord bits) {
        for (BitWord labelled = bits & ~free[k]; labelled != 0; labelled &= labelled - 1)
            seeds = both(seeds, marker[k * kWordBits + __builtin_ctzll(labelled)]);
    });
    return seeds;
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

void AgreedAreas::label(PlaneView<unsigned char> marker, Neighbours neighbours,
                        unsigned char highLabel, const Masks& masks) {
    const int words = masks.words;
    const int reach = neighbours == Neighbours::Eight ? 1 : 0;
    int runs = 0, above = 0;
    for (int y = 0; y < marker.height; ++y) {
        Run* const row = m_runs[y % 2];
        const Run* touching = m_runs[1 - y % 2];
        const Run* const endAbove = touching + above;
        const int count = listRuns(masks.low + std::int64_t{words} * y, words, marker.width, row);
        int runAbove = runs - above;
        for (int i = 0; i < count; ++i) {
            m_areas[runs + i] =
                ~seedsOf(row[i], masks.free + std::int64_t{words} * y, marker.row(y));
            const auto pass = [&] { ++touching, ++runAbove; };
            while (touching != endAbove && touching->end + reach <= row[i].start) pass();
            while (touching != endAbove && touching->start < row[i].end + reach) {
                unite(runAbove, runs + i);
                // The last one may touch the next run, too.
                if (touching->end > row[i].end) break;
                pass();
            }
        }
        runs += count;
        above = count;
    }
    int run = 0;
    for (int y = 0; y < marker.height; ++y) {
        Run* const row = m_runs[0];
        const int count = listRuns(masks.low + std::int64_t{words} * y, words, marker.width, row);
        for (int i = 0; i < count; ++i, ++run) {
            // Runs before this one have their area's seeds by now.
            if (m_areas[run] >= 0) m_areas[run] = m_areas[m_areas[run]];
            const int seeds = ~m_areas[run];
            if (seeds == kDiffering) continue;
            std::fill(marker.row(y) + row[i].start, marker.row(y) + row[i].end,
                      seeds == kNoSeed ? highLabel : static_cast<unsigned char>(seeds));
            forEachWord(row[i].start, row[i].end, [&](int k, BitWord bits) {
                masks.free[std::int64_t{words} * y + k] &= ~bits;
                masks.low[std::int64_t{words} * y + k] &= ~bits;
            });
        }
    }
}

}  // namespace numeric
