#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

/// Euclidean distances on the pixel grid by fast marching, in whole numbers.
///
/// The unit is 1/169 pixel, for which a step across a corner is 238.997 units, almost whole. A
/// front reaches a pixel over one of the eight triangles that the pixel forms with a neighbour
/// across a side and one of the two corner neighbours next to it. If the corner is reached `lead`
/// units before the side, the plane front through both arrives sqrt(169^2 - lead^2) after the side,
/// as long as its ray passes between the two (0 <= lead <= 169 / sqrt(2)); else it arrives from the
/// one or the other alone. Of the two corners the earlier one gives the earlier arrival, so four
/// directions are enough. (Sethian 1996; Tsitsiklis 1995 for the triangles of eight neighbours.)
///
/// An arrival never precedes what it was computed from by less than kLeastAdvance, and never gets
/// later when that gets earlier, rounding included. So the distances of a plane are the one
/// solution of the rule at all pixels, whatever the order in which it is found.
namespace numeric {

inline constexpr int kSideDistance = 169;
inline constexpr int kCornerDistance = 239;
/// The last lead at which a ray still passes between side and corner.
inline constexpr int kLargestLead = 119;
inline constexpr int kLeastAdvance = 120;
/// Rays within 22.5 degrees of the side are the side's: 169 sin(22.5 degrees) = 64.67.
inline constexpr int kLargestLeadOfSide = 64;

/// The integer nearest to sqrt(169^2 - lead^2).
constexpr int advanceAfterSide(int lead) {
    const int square = kSideDistance * kSideDistance - lead * lead;
    int root = 0;
    // Nearest: the square lies above (root + 1/2)^2 = root^2 + root + 1/4 for all smaller roots.
    while (square > root * root + root) ++root;
    return root;
}

constexpr std::array<std::uint8_t, kLargestLead + 1> makeAdvances() {
    std::array<std::uint8_t, kLargestLead + 1> table{};
    for (int lead = 0; lead <= kLargestLead; ++lead)
        table[static_cast<std::size_t>(lead)] = static_cast<std::uint8_t>(advanceAfterSide(lead));
    return table;
}

inline constexpr std::array<std::uint8_t, kLargestLead + 1> kAdvances = makeAdvances();
static_assert(kAdvances[0] == kSideDistance && kAdvances[kLargestLead] == kLeastAdvance);
static_assert(kLargestLead + kLeastAdvance == kCornerDistance);

/// The arrival over a side neighbour and the earlier of the corners next to it.
inline int arrival(int side, int corner) {
    const int lead = side - corner;
    const int used = std::clamp(lead, 0, kLargestLead);
    return side - std::max(lead, 0) + used + kAdvances[static_cast<std::size_t>(used)];
}

}  // namespace numeric
