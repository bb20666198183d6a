#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>

#include "numeric/base/checks.h"
#include "numeric/base/neighbours.h"
#include "numeric/base/scratch.h"
#include "numeric/base/views.h"
#include "numeric/labelling/label_reuse.h"
#include "numeric/labelling/label_rows.h"

// Connected areas by runs: a row (4 neighbours) or two rows taken together (8 neighbours) become a
// strip, a bit for each column; its runs are numbered, and runs that touch are united.
//
//   pixels      strip       runs        contacts       areas in raster order      labels
//   .99..9      011001      0: 1-2      0 - 2          runs 0, 2: area 0          .22..3
//   .99...                  1: 5        of strips
//   9.....      100000      2: 0        (Rem's sets)   run 1: area 1              2.....
//
// 1. mask, merge and unite (label_rows.cpp), 2. number the areas by their first pixels, 3. one
// label each, or when areas are more than labels, labels again far apart (label_reuse.cpp),
// 4. draw the runs.
namespace numeric {

const SlotTable<LabelRows> kLabelSlots(kLabelBuilds);

namespace {

constexpr int kLargestByte = 255;

/// Across corners every run of two rows taken together is connected, which halves their number.
constexpr int rowsPerStrip(Neighbours neighbours) {
    return neighbours == Neighbours::Eight ? 2 : 1;
}

/// What the labelling keeps in its scratch.
struct LabelScratch {
    LabelScratch(ScratchLayout layout, int width, int height)
        : words(wordsOf(width)),
          stripMasks(layout.take<BitWord>(std::int64_t{words} * height)),
          rowMasks(layout.take<BitWord>(std::int64_t{words} * kRowMasks)),
          runs(layout.take<RunBounds>(mostRuns(width, 1) + kGroup)),
          contacts(layout.take<Contact>(std::int64_t{width} + kGroup)),
          renumbered(layout.take<int>(mostRuns(width, 1))),
          line(layout.take<unsigned char>(std::int64_t{width} + kLineSlack)),
          firstRunOfStrip(layout.take<int>(std::int64_t{height} + 1)),
          firstAreaOfStrip(layout.take<int>(std::int64_t{height} + 1)),
          areaOfRun(layout.take<int>(mostRuns(width, height))),
          labelOfArea(layout.take<unsigned char>(mostRuns(width, height))),
          reuse(layout, width, height, mostRuns(width, height)),
          size(layout.used()) {}

    static std::int64_t mostRuns(int width, int height) {
        return (std::int64_t{width} + 1) / 2 * height;
    }
    BitWord* stripMask(int strip) const { return stripMasks + std::int64_t{strip} * words; }
    /// Of two strips at a time.
    BitWord* rowMask(int row) const { return rowMasks + row % kRowMasks * words; }

    static constexpr int kRowMasks = 4;
    int words;  // of a mask
    BitWord* stripMasks;
    BitWord* rowMasks;
    RunBounds* runs;    // of one strip
    Contact* contacts;  // of one strip with the one above
    int* renumbered;    // the areas that begin in one strip
    unsigned char* line;
    int* firstRunOfStrip;
    int* firstAreaOfStrip;  // the number of areas that begin in earlier strips
    int* areaOfRun;         // at first each run's parent in its set, whose root is its first run
    unsigned char* labelOfArea;
    LabelReuse reuse;
    std::int64_t size;
};

/// Unites the sets of two runs; links lead to ever smaller numbers (Rem's algorithm with splicing;
/// Patwary, Blair & Manne 2010).
void unite(int first, int second, int* parents) {
    while (parents[first] != parents[second]) {
        if (parents[first] < parents[second]) std::swap(first, second);
        const int parent = parents[first];
        parents[first] = parents[second];
        if (first == parent) return;
        first = parent;
    }
}

/// Masks all rows and unites the runs that touch.
void uniteRuns(PlaneView<const unsigned char> marker, const LabelRows& rows, Neighbours neighbours,
               LabelScratch& scratch) {
    const auto findContacts =
        neighbours == Neighbours::Eight ? rows.findContacts8 : rows.findContacts4;
    int* const parents = scratch.areaOfRun;
    int runs = 0;
    Strip upper{};
    for (int y = 0, strip = 0; y < marker.height; y += rowsPerStrip(neighbours), ++strip) {
        const int lastRow = std::min(y + rowsPerStrip(neighbours), marker.height) - 1;
        for (int row = y; row <= lastRow; ++row)
            rows.maskRow(marker.row(row), marker.width, scratch.rowMask(row));
        scratch.firstRunOfStrip[strip] = runs;
        const Strip lower{scratch.stripMask(strip), scratch.rowMask(y), scratch.rowMask(lastRow),
                          runs};
        runs += rows.mergeMasks(lower.firstRowMask, lower.lastRowMask, scratch.words,
                                scratch.stripMask(strip));
        std::iota(parents + lower.firstRun, parents + runs, lower.firstRun);
        if (upper.firstRun < lower.firstRun && lower.firstRun < runs) {
            const int contacts = findContacts(upper, lower, scratch.words, scratch.contacts);
            for (int i = 0; i < contacts; ++i)
                unite(scratch.contacts[i].upperRun, scratch.contacts[i].lowerRun, parents);
        }
        upper = lower;
        scratch.firstRunOfStrip[strip + 1] = runs;
    }
}

/// Replaces the parents of a strip's runs by area numbers, which go on from firstArea in the order
/// of first runs. A parent comes before its run. Returns the number of areas so far.
int numberRuns(int firstRun, int endRun, int firstArea, int* areaOfRun) {
    int areas = firstArea;
    for (int run = firstRun; run < endRun; ++run) {
        const int parent = areaOfRun[run];
        const bool isRoot = parent == run;
        areaOfRun[run] = isRoot ? areas : areaOfRun[parent];
        areas += isRoot ? 1 : 0;
    }
    return areas;
}

/// Puts the areas that begin in a strip of two rows, from firstArea on, into the order of their
/// first pixels: those with a pixel in the strip's first row precede those without.
void orderByFirstPixel(int strip, const unsigned char* firstRow, int width, int firstArea,
                       int areas, const LabelRows& rows, LabelScratch& scratch) {
    constexpr int kUnknown = -1;
    int* const areaOfRun = scratch.areaOfRun + scratch.firstRunOfStrip[strip];
    int* const renumbered = scratch.renumbered - firstArea;
    std::fill(renumbered + firstArea, renumbered + areas, kUnknown);
    int next = firstArea;
    const int runs = rows.findRuns(scratch.stripMask(strip), width, scratch.runs);
    for (const bool inFirstRow : {true, false})
        for (int i = 0; i < runs; ++i) {
            const int area = areaOfRun[i];
            if (area < firstArea || renumbered[area] != kUnknown) continue;
            const auto [start, end] = scratch.runs[i];
            if (!inFirstRow || std::any_of(firstRow + start, firstRow + end,
                                           [](unsigned char pixel) { return pixel != 0; }))
                renumbered[area] = next++;
        }
    for (int i = 0; i < runs; ++i)
        if (areaOfRun[i] >= firstArea) areaOfRun[i] = renumbered[areaOfRun[i]];
}

/// Turns parents into area numbers, in raster order of first pixels. Returns how many there are.
int numberAreas(PlaneView<const unsigned char> marker, const LabelRows& rows, Neighbours neighbours,
                LabelScratch& scratch) {
    int areas = 0;
    scratch.firstAreaOfStrip[0] = 0;
    for (int y = 0, strip = 0; y < marker.height; y += rowsPerStrip(neighbours), ++strip) {
        const int firstArea = areas;
        areas = numberRuns(scratch.firstRunOfStrip[strip], scratch.firstRunOfStrip[strip + 1],
                           firstArea, scratch.areaOfRun);
        if (rowsPerStrip(neighbours) > 1 && areas - firstArea > 1)
            orderByFirstPixel(strip, marker.row(y), marker.width, firstArea, areas, rows, scratch);
        scratch.firstAreaOfStrip[strip + 1] = areas;
    }
    return areas;
}

void reuseLabels(const LabelReuse::Demand& demand, PlaneView<const unsigned char> marker,
                 const LabelRows& rows, Neighbours neighbours, LabelScratch& scratch) {
    LabelReuse& reuse = scratch.reuse;
    reuse.begin(demand);
    for (int y = 0, strip = 0; y < marker.height; y += rowsPerStrip(neighbours), ++strip) {
        const bool whole = reuse.wantsWholeRow(y);
        const int firstNewArea = scratch.firstAreaOfStrip[strip];
        if (!whole && scratch.firstAreaOfStrip[strip + 1] == firstNewArea) continue;
        const int runs = rows.findRuns(scratch.stripMask(strip), marker.width, scratch.runs);
        const int* const areaOfRun = scratch.areaOfRun + scratch.firstRunOfStrip[strip];
        int* const wanted = scratch.renumbered;  // listed first: a branch would be hard to predict
        int count = 0;
        for (int i = 0; i < runs; ++i) {
            wanted[count] = i;
            count += whole || areaOfRun[i] >= firstNewArea ? 1 : 0;
        }
        for (int i = 0; i < count; ++i) {
            const RunBounds& run = scratch.runs[wanted[i]];
            reuse.addRun(areaOfRun[wanted[i]], run.start, run.end, y);
        }
    }
    reuse.chooseLabels(scratch.labelOfArea);
}

void writeLabels(PlaneView<unsigned char> marker, const LabelRows& rows, Neighbours neighbours,
                 const LabelScratch& scratch) {
    const int* areaOfRun = scratch.areaOfRun;
    for (int y = 0, strip = 0; y < marker.height; y += rowsPerStrip(neighbours), ++strip) {
        const int runs = rows.findRuns(scratch.stripMask(strip), marker.width, scratch.runs);
        const int end = std::min(y + rowsPerStrip(neighbours), marker.height);
        rows.drawRuns(scratch.runs, runs, areaOfRun, scratch.labelOfArea, scratch.line);
        if (runs > 0)
            for (int row = y; row < end; ++row)
                rows.replaceNonZero(scratch.line, marker.row(row), marker.width);
        areaOfRun += runs;
    }
}

}  // namespace

KernelStatus labelSeedsScratchSize(int width, int height, int* size) {
    return reportScratchSize(width, height, size, [](int w, int h) {
        const std::int64_t pixels = std::int64_t{w} * h;
        if (pixels > std::numeric_limits<int>::max()) return pixels;  // the rest could overflow
        return LabelScratch({}, w, h).size;
    });
}

KernelStatus labelSeeds(unsigned char* marker, int step, int width, int height, int smallestLabel,
                        int largestLabel, int connectivity, int* count, unsigned char* scratch) {
    int scratchSize = 0;
    const KernelStatus status =
        firstError({checkPointers({marker, count, scratch}),
                    labelSeedsScratchSize(width, height, &scratchSize),
                    checkByteSteps(width, {step}), checkArgument(isNeighbourhood(connectivity)),
                    checkArgument(smallestLabel >= 1 && largestLabel >= smallestLabel &&
                                  largestLabel <= kLargestByte)});
    if (status != Success) return status;

    const LabelRows& rows = kLabelSlots.selected();
    const Neighbours neighbours = neighboursOf(connectivity);
    LabelScratch work(ScratchLayout(scratch), width, height);
    const PlaneView<const unsigned char> areasOfInput{marker, step, width, height};
    uniteRuns(areasOfInput, rows, neighbours, work);
    const int areas = numberAreas(areasOfInput, rows, neighbours, work);

    const int labels = largestLabel - smallestLabel + 1;
    if (areas <= labels)
        std::iota(work.labelOfArea, work.labelOfArea + areas,
                  static_cast<unsigned char>(smallestLabel));
    else
        reuseLabels({areas, smallestLabel, labels}, areasOfInput, rows, neighbours, work);

    writeLabels({marker, step, width, height}, rows, neighbours, work);
    *count = areas;
    return Success;
}

}  // namespace numeric
