#pragma once

#include <cstddef>
#include <cstdint>

#include "numeric/base/bit_rows.h"
#include "numeric/base/dispatch.h"

namespace numeric {

/// What the queue knows of a pixel: its label once that is final, kFreeKey + its relief as long as
/// nothing has reached it, and otherwise what the flood wants. The rim is no pixel.
using FloodKey = std::int16_t;
inline constexpr FloodKey kLabelMask = 0x00FF;
inline constexpr FloodKey kFreeKey = 0x0400;
inline constexpr int kReliefLevels = 256;
inline constexpr FloodKey kRimKey = -1;

/// Keys that may be read past the rim's last one.
inline constexpr int kFloodKeySlack = 16;

/// Counts of a plane's free pixels: those without a label.
struct FreePixels {
    std::int64_t count;
    int lowest;   // the lowest level of one, above all levels if there is none
    int highest;  // the highest, -1 if there is none
};

/// What the rows of a flood's planes have in common, if they are of two levels: all free pixels are
/// of one level, and all seeds above that level carry one label.
struct TwoLevels {
    unsigned char freeLevel;
    unsigned char highLabel;  // 0 until a seed above the free level is found
    bool areMixed;            // there is a pixel that does not fit
    std::int64_t seeds;       // runs of them in rows, those above the free level left out
};

/// A line of labels for markBorders has one zero byte before its first pixel and this many past its
/// last.
inline constexpr int kBorderLineSlack = 65;

/// Inner loops over all pixels of the watershed.
struct WatershedRows {
    /// Writes the bits of a row's free pixels and of those that are not above the free level,
    /// unused ones zero, and extends *levels.
    void (*scan)(const unsigned char* relief, const unsigned char* marker, int width, BitWord* free,
                 BitWord* low, TwoLevels* levels);

    /// Makes a row's keys from its relief and its marker, and extends *free.
    void (*prepare)(const unsigned char* relief, const unsigned char* marker, int width,
                    FloodKey* keys, FreePixels* free);
    /// Adds the seeds up to lastLevel that have a free pixel among their eight neighbours to the
    /// lists, one for each level; those below firstLevel to its own. keys is the row's first, among
    /// rows at that stride; pixel is its number.
    void (*listSeeds)(const FloodKey* keys, std::ptrdiff_t stride, const unsigned char* relief,
                      int width, int firstLevel, int lastLevel, int pixel, int** listEnds);
    /// Writes the labels, 0 for pixels that are still free. Other bits below kFreeKey do not count.
    void (*readLabels)(const FloodKey* keys, unsigned char* marker, int width);

    /// Writes 255 over the labels of the middle line where one of the four or eight neighbours
    /// carries a greater one. `out` holds that line already. Each pointer is to the line's first
    /// pixel.
    void (*markBorders4)(const unsigned char* above, const unsigned char* line,
                         const unsigned char* below, unsigned char* out, int width);
    void (*markBorders8)(const unsigned char* above, const unsigned char* line,
                         const unsigned char* below, unsigned char* out, int width);
};

extern const RowBuilds<WatershedRows> kWatershedBuilds;
extern const SlotTable<WatershedRows> kWatershedSlots;

}  // namespace numeric
