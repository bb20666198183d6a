#pragma once

#include <cstdint>
#include <limits>

#include "numeric/numeric.h"

namespace numeric {

/// allocAligned for counts of any size: null also where the bytes are more than an int holds.
template <class T>
T* allocArray(std::int64_t count, int moreBytes = 0) {
    constexpr std::int64_t kMost = std::numeric_limits<int>::max();
    if (count > (kMost - moreBytes) / static_cast<std::int64_t>(sizeof(T))) return nullptr;
    const std::int64_t bytes = count * static_cast<std::int64_t>(sizeof(T)) + moreBytes;
    return static_cast<T*>(allocAligned(static_cast<int>(bytes)));
}

}  // namespace numeric
