#pragma once

#include <cstdint>

#include "numeric/base/bit_rows.h"
#include "numeric/base/dispatch.h"

namespace numeric {

/// One row or two neighbouring rows as a mask of the columns with a non-zero pixel. Its runs, the
/// unbroken stretches of such columns, are numbered in order over all strips.
struct Strip {
    const BitWord* mask;
    const BitWord* firstRowMask;  // of the strip's rows on their own
    const BitWord* lastRowMask;
    int firstRun;
};

/// The first and the past-the-last column of a run.
struct RunBounds {
    int start;
    int end;
};

/// Two runs of neighbouring strips that touch.
struct Contact {
    int upperRun;
    int lowerRun;
};

/// Lists are written in groups: this many entries more than there are may be written.
inline constexpr int kGroup = 8;
inline constexpr int kLineSlack = 64;

/// Inner loops of the labelling.
struct LabelRows {
    /// Writes the mask of the row's non-zero pixels, unused bits zero.
    void (*maskRow)(const unsigned char* row, int width, BitWord* mask);
    /// Writes the mask of a strip. Returns the number of its runs.
    int (*mergeMasks)(const BitWord* firstRow, const BitWord* lastRow, int words, BitWord* strip);
    /// Lists at least one contact of every two runs that touch, with four neighbours or
    /// with eight. Returns the number of contacts, at most one a column.
    int (*findContacts4)(const Strip& upper, const Strip& lower, int words, Contact* contacts);
    int (*findContacts8)(const Strip& upper, const Strip& lower, int words, Contact* contacts);
    /// Lists the runs of a mask. Returns their number.
    int (*findRuns)(const BitWord* mask, int width, RunBounds* runs);
    /// Writes each run's label over its columns, and up to kLineSlack bytes on; the bytes between
    /// runs are left undefined.
    void (*drawRuns)(const RunBounds* runs, int count, const int* areaOfRun,
                     const unsigned char* labelOfArea, unsigned char* line);
    /// Each non-zero pixel becomes the line's byte in its column.
    void (*replaceNonZero)(const unsigned char* line, unsigned char* row, int width);
};

extern const RowBuilds<LabelRows> kLabelBuilds;
extern const SlotTable<LabelRows> kLabelSlots;

}  // namespace numeric
