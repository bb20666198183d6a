#pragma once

#include <cstdint>

#include "numeric/base/dispatch.h"
#include "numeric/watershed/group_bits.h"

namespace numeric {

/// A pixel's key tells when the flood by steps takes it: the smaller, the sooner. It is
///     (steps << kStepShift) + label               where all free pixels are of one level,
///     (level << KeyFormat::kLevelShift) + steps   on any other relief; labels come later.
/// From a neighbour arrives max(its key + step, floor), where the floor of a pixel is the smallest
/// key that it can have.
template <class Key>
struct KeyFormat;

template <>
struct KeyFormat<std::uint16_t> {
    static constexpr int kLevelShift = 8;
    static constexpr std::uint16_t kFar = 0xFFFF;  // not reached; sums stop here
    static constexpr std::uint16_t kLongSteps = 254;
};

template <>
struct KeyFormat<std::int32_t> {
    static constexpr int kLevelShift = 22;
    static constexpr std::int32_t kFar = 0x7F000000;  // not reached; leaves room for a few steps
    static constexpr std::int32_t kLongSteps = 0x7EFF00;
};

inline constexpr int kStepShift = 8;

/// A row of keys, the row above or below it, and the floors. Seeds have floors of kFar: they keep
/// their keys. One key to the left of the first group and one to the right of the last are read.
template <class Key>
struct KeyRow {
    const Key* neighbours;
    Key* keys;
    const Key* floors;
    Key step;  // what one step adds to a key
};

/// What rows tell about whether a plane has two levels.
struct LevelKinds {
    bool otherLevels;            // a free pixel is not of the free level
    unsigned char smallestHigh;  // labels of the seeds above the free level
    unsigned char largestHigh;
};

/// How far the flood of a plane of two levels has come, in pixels.
struct Reach {
    bool isLong = false;  // more steps somewhere than the keys can count
    std::int64_t free = 0;
    std::int64_t far = 0;
};

/// A row of the picture, and where its keys and floors go.
template <class Key>
struct PreparedRow {
    const unsigned char* relief;
    const unsigned char* marker;
    int width;
    const GroupBits* needed;  // groups with free pixels, and those around them
    int words;
    Key* keys;
    Key* floors;
};

template <class Key>
struct StepKeyRows {
    int lanes;  // pixels of a group
    /// Sets the bits of the groups that have free pixels, and clears the others.
    void (*findFree)(const unsigned char* marker, int width, GroupBits* free);
    /// Fills the keys and floors of the groups needed, for a plane of two levels or for any.
    void (*prepareTwoLevels)(const PreparedRow<Key>& row, unsigned char freeLevel,
                             LevelKinds* kinds);
    void (*prepare)(const PreparedRow<Key>& row);
    /// Lower keys to what arrives from the neighbouring row, to 8 or to 4 neighbours, then along
    /// the row both ways. Return the number of groups visited.
    int (*relax8)(const GroupRow& groups, const KeyRow<Key>& row);
    int (*relax4)(const GroupRow& groups, const KeyRow<Key>& row);
    /// Adds what a row of final keys tells.
    void (*addReach)(const Key* keys, const Key* floors, const GroupBits* free, int words,
                     Reach* reach);
    /// Writes the labels of the free pixels, highLabel where none has arrived.
    void (*readLabels)(const Key* keys, unsigned char highLabel, const GroupBits* free, int words,
                       unsigned char* marker, int width);
};

extern const RowBuilds<StepKeyRows<std::uint16_t>> kStepKey16Builds;
extern const RowBuilds<StepKeyRows<std::int32_t>> kStepKey32Builds;

}  // namespace numeric
