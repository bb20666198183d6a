#pragma once

#include <cstdint>

#include "numeric/dispatch.h"

namespace numeric {

/// A pixel's distance and label in one number, distance first: (distance << 8) + label.
using SweepKey = std::int32_t;
inline constexpr int kLabelBits = 8;
/// Not reached. Adding the largest step to it does not overflow.
inline constexpr SweepKey kFarKey = 0x7F000000;
/// Distances of this key and above, but below kFarKey, are too long for a sweep.
inline constexpr SweepKey kLongKey = kFarKey - (1 << 20);

/// Room that every row of keys and of free flags needs on either side.
inline constexpr int kSweepMargin = 64;

/// Three rows of keys, and which pixels of the middle one are free: 255, else 0. All have their
/// margins; the keys there are kFarKey and the flags 0.
struct SweepRow {
    const SweepKey* above;
    SweepKey* keys;
    const SweepKey* below;
    const unsigned char* free;
    int width;
};

/// What rows tell about whether a plane can be swept.
struct SweepKinds {
    bool otherLevels;            // a free pixel is not of the free level
    unsigned char smallestHigh;  // labels of the seeds above the free level
    unsigned char largestHigh;
};

/// Inner loops of the sweeps for one order of distances.
struct SweepOrder {
    /// Lowers keys to what arrives from one neighbouring row, then along the row both ways.
    /// Returns whether any key changed.
    bool (*relaxFromAbove)(const SweepRow& row);
    bool (*relaxFromBelow)(const SweepRow& row);
    /// Replaces keys that are not what arrives from the neighbours. Returns whether any was, and
    /// sets *isLong if any distance is too long.
    bool (*settle)(const SweepRow& row, bool* isLong);
};

struct SweepRows {
    SweepOrder byMarching;  // distances of arrival.h
    /// Fills a row of keys and free flags, without the margins, and extends *kinds.
    void (*prepare)(const unsigned char* relief, const unsigned char* marker, int width,
                    unsigned char freeLevel, SweepKey* keys, unsigned char* free,
                    SweepKinds* kinds);
    /// Writes the labels of the free pixels, highLabel where none arrived.
    void (*readLabels)(const SweepKey* keys, unsigned char highLabel, unsigned char* marker,
                       int width);
};

extern const RowBuilds<SweepRows> kSweepBuilds;

}  // namespace numeric
