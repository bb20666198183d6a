#pragma once

#include <cstdint>

#include "numeric/base/dispatch.h"
#include "numeric/watershed/group_bits.h"

namespace numeric {

/// Once the keys of a flood are final, the label of a pixel is the smallest among the neighbours
/// whose keys are smaller than its own. A pixel's sources tell which ones these are, a bit for each
/// neighbour; seeds have none.
enum Source : unsigned char {
    UpperLeft = 1,
    Upper = 2,
    UpperRight = 4,
    LeftSide = 8,
    RightSide = 16,
    LowerLeft = 32,
    Lower = 64,
    LowerRight = 128,
};

/// Rows of final keys, and where the sources go that they tell.
struct SourceRow {
    const std::int32_t* above;
    const std::int32_t* keys;
    const std::int32_t* below;
    const std::int32_t* floors;
    const GroupBits* free;  // in groups of the keys
    int words;
    unsigned char* sources;
};

/// A row of labels and the one above or below it. One label to the left of the first group and one
/// to the right of the last are read.
struct LabelRow {
    const unsigned char* neighbours;
    unsigned char* labels;
    const unsigned char* sources;
    bool isFromAbove;
};

struct StepLabelRows {
    int lanes;  // pixels of a group
    /// Writes the sources of the free groups, among 8 or 4 neighbours. Returns false if the steps
    /// to any pixel have overrun the keys.
    bool (*findSources8)(const SourceRow& row);
    bool (*findSources4)(const SourceRow& row);
    /// Sets the bits of the groups that have any source, and clears the others.
    void (*findFree)(const unsigned char* sources, int width, GroupBits* free);
    /// Fills a row of labels, 255 where there is no seed.
    void (*prepare)(const unsigned char* marker, int width, unsigned char* labels);
    /// Lower labels to those that come from the neighbouring row, then along the row both ways.
    /// Return the number of groups visited.
    int (*relax8)(const GroupRow& groups, const LabelRow& row);
    int (*relax4)(const GroupRow& groups, const LabelRow& row);
};

extern const RowBuilds<StepLabelRows> kStepLabelBuilds;

}  // namespace numeric
