#pragma once

namespace numeric {

/// The pixels beside a pixel: those across a side, or across a corner as well.
enum class Neighbours { Four, Eight };

// The norm codes that stand for a neighbourhood.
inline constexpr int kChessboard = 0;
inline constexpr int kCityBlock = 1;

constexpr bool isNeighbourhood(int norm) {
    return norm == kChessboard || norm == kCityBlock;
}

constexpr Neighbours neighboursOf(int norm) {
    return norm == kCityBlock ? Neighbours::Four : Neighbours::Eight;
}

}  // namespace numeric
