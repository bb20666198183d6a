#pragma once

#include <algorithm>

#include "numeric/base/dispatch.h"

namespace numeric {

/// Columns first to last of a row, both included; none if last < first.
struct Segment {
    int first = 0;
    int last = -1;

    bool isEmpty() const { return last < first; }
    void add(Segment other) {
        if (other.isEmpty()) return;
        first = isEmpty() ? other.first : std::min(first, other.first);
        last = std::max(last, other.last);
    }
};

/// A row, the neighbouring row that raises it, and the bounds of both.
struct RowPair {
    const float* source;
    const float* sourceBound;
    const float* bound;
    float* row;
};

/// What became of a row: the columns raised, and those of them that can raise the source in turn.
struct Raised {
    Segment columns;
    Segment back;
};

/// Inner loops of the peak step, over rows of width pixels, for one of the two neighbourhoods.
/// Every raise is one that the result contains, so it does no harm to raise more than was asked.
struct PeakStepRows {
    /// Lowers the plane's row to the bound where it exceeds it. Leaves no NaN and no negative zero.
    void (*lower)(const float* bound, float* row, int width);
    /// The same, and raises the row as far as its neighbour in the next row, source, allows.
    void (*lowerAndRaise)(const float* source, const float* bound, float* row, int width);

    /// Raises the row as far as its neighbour in the next row, source, and the bound allow, where
    /// the columns of source in changed can matter. The source has passed its values along itself.
    Raised (*raise)(const RowPair& rows, Segment changed, int width);

    /// Raises pixels of the row next to columns of the segment, and so on along the row. Returns
    /// the columns raised.
    Segment (*spread)(const float* bound, float* row, Segment segment, int width);
};

extern const RowBuilds<PeakStepRows> kPeakStep8Builds;
extern const RowBuilds<PeakStepRows> kPeakStep4Builds;
extern const SlotTable<PeakStepRows> kPeakStepSlots8;
extern const SlotTable<PeakStepRows> kPeakStepSlots4;

}  // namespace numeric
