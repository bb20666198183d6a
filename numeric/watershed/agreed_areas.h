#pragma once

#include <cstdint>

#include "numeric/base/bit_rows.h"
#include "numeric/base/neighbours.h"
#include "numeric/base/scratch.h"
#include "numeric/base/views.h"

namespace numeric {

/// The connected areas of the pixels that are not above the free level. Where all seeds of an area
/// have one label, so will all its pixels, however far they are from one seed or the other; and an
/// area without a seed is reached from above the free level alone. Neither needs to be flooded.
///
/// Areas are sets of runs, the unbroken stretches of such pixels in the rows.
class AgreedAreas {
public:
    /// Masks of rows of a plane, `words` words each.
    struct Masks {
        BitWord* free;  // the pixels without a label
        BitWord* low;   // those that are not above the free level
        int words;
    };

    AgreedAreas(int width, int height, ScratchLayout layout)
        : m_runs(layout.take<Run>(mostRuns(width, height))),
          m_areas(layout.take<int>(mostRuns(width, height))),
          m_firstRuns(layout.take<int>(std::int64_t{height} + 1)),
          m_size(layout.used()) {}

    std::int64_t size() const { return m_size; }

    /// Writes the labels of these areas, highLabel where there is no seed, and takes their pixels
    /// out of the masks.
    void label(PlaneView<unsigned char> marker, Neighbours neighbours, unsigned char highLabel,
               const Masks& masks);

private:
    struct Run {
        int start;
        int end;  // past the last pixel
    };
    /// What is known of an area's seeds: none, their label, or that they differ.
    static constexpr int kNoSeed = 0;
    static constexpr int kDiffering = 256;

    /// After so many runs, and whenever they are twice as many as at the trial before, it is given
    /// up where most are of areas whose seeds differ: it costs more than it saves then.
    static constexpr int kFirstTrial = 1 << 16;

    static std::int64_t mostRuns(int width, int height) {
        return (std::int64_t{width} + 1) / 2 * height;
    }
    static int both(int seeds, int others) {
        if (seeds == kNoSeed || seeds == others) return others;
        return others == kNoSeed ? seeds : kDiffering;
    }
    int listRuns(const BitWord* low, int words, int width, int firstRun);
    void noteSeeds(const BitWord* free, const BitWord* low, int words, const unsigned char* marker,
                   int firstRun);
    void uniteRows(int upperRun, int lowerRun, int endRun, int reach);
    int areaOf(int run);
    bool areMostlyDiffering(int runs);
    void unite(int run, int other);

    Run* m_runs;  // row by row
    /// Of each run: an earlier run of its area, or, if it is the first, ~ of what is known of the
    /// area's seeds.
    int* m_areas;
    int* m_firstRuns;  // of each row, and past the last
    std::int64_t m_size;
};

}  // namespace numeric
