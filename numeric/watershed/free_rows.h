#pragma once

#include <cstdint>

#include "numeric/base/dispatch.h"

namespace numeric {

/// Pixels of a row in one word of a mask; bit i of word k stands for pixel 64 k + i.
inline constexpr int kFreeBits = 64;

/// What the rows of a flood's planes have in common, if they do: all free pixels (without a seed)
/// are of one level, and all seeds above that level carry one label.
struct FreeKinds {
    unsigned char freeLevel;
    unsigned char highLabel;  // 0 until a seed above the free level is found
    bool areMixed;            // there is a pixel that does not fit
};

struct FreeRows {
    /// Writes the mask of a row's free pixels, unused bits zero, and extends *kinds.
    void (*scan)(const unsigned char* relief, const unsigned char* marker, int width,
                 std::uint64_t* free, FreeKinds* kinds);
};

extern const RowBuilds<FreeRows> kFreeBuilds;

}  // namespace numeric
