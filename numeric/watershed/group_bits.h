#pragma once

#include <cstdint>

namespace numeric {

/// Bits of a row, one for each group of as many pixels as a vector has lanes.
using GroupBits = std::uint64_t;
inline constexpr int kBitsPerWord = 64;

/// Which groups of a row a sweep visits, and what it tells about them.
struct GroupRow {
    const GroupBits* free;  // groups with pixels that can change
    GroupBits* visits;      // the groups to visit; all 0 afterwards
    GroupBits* changed;     // receives the groups that changed
    int words;
    bool isFirst;  // no visit has settled these groups in themselves yet
};

}  // namespace numeric
