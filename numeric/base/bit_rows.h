#pragma once

#include <cstdint>

namespace numeric {

/// A row of bits, one to a pixel: bit i of word k stands for pixel 64 k + i.
using BitWord = std::uint64_t;
inline constexpr int kWordBits = 64;

constexpr int wordsOf(int width) {
    return (width - 1) / kWordBits + 1;
}

}  // namespace numeric
