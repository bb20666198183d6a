#pragma once

#include <array>
#include <cstddef>

#include "numeric/numeric.h"

/// How a kernel reaches the build of its inner loops that the selected variant asks for.
///
/// The inner loops of a kernel family are the members of a struct of function pointers, compiled
/// once per instruction set (`<family>_rows.cpp`). A SlotTable of one kernel maps the six variant
/// slots to those structs.
namespace numeric {

/// Instruction sets the row functions are built for, each containing the ones before it.
enum Build : int { Portable, Ssse3, Sse4, Avx2, Avx512 };
inline constexpr int kBuildCount = 5;
inline constexpr int kSlotCount = 6;
/// Floats of the longest vector of any build.
inline constexpr int kMostLanes = 16;

/// A family's row functions, indexed by Build. Null for a build the compiler did not make;
/// Portable is always there.
template <class Rows>
using RowBuilds = std::array<const Rows*, kBuildCount>;

/// For each slot, the slot whose build it runs: slots with the same entry share one build.
using SlotGrouping = std::array<int, kSlotCount>;
inline constexpr SlotGrouping kSixBuilds = {0, 1, 2, 3, 4, 5};

/// The best build that this processor and its operating system can run.
Build bestBuild();

/// The build of a slot: slot 0 adapts, it takes the best one; slots 1 to 5 pin one build each,
/// from Portable up, or the best one if the processor does not reach the pinned one.
constexpr Build buildOfSlot(int slot, Build best) {
    const int pinned = slot - 1;
    return slot == 0 || pinned > best ? best : static_cast<Build>(pinned);
}

/// The six slots of one kernel. Defined at namespace scope beside the kernel, declared beside its
/// row functions, where the tests find its grouping.
template <class Rows>
class SlotTable {
public:
    explicit SlotTable(const RowBuilds<Rows>& builds, const SlotGrouping& grouping = kSixBuilds,
                       Build best = bestBuild())
        : m_grouping(grouping) {
        for (int slot = 0; slot < kSlotCount; ++slot) {
            int build = buildOfSlot(grouping[slot], best);
            while (!builds[build]) --build;
            m_slots[slot] = builds[build];
        }
    }

    const Rows& inSlot(int slot) const { return *m_slots[slot]; }
    const SlotGrouping& grouping() const { return m_grouping; }
    const Rows& selected() const { return inSlot(variantIndex()); }

private:
    SlotGrouping m_grouping;
    std::array<const Rows*, kSlotCount> m_slots{};
};

}  // namespace numeric

/// The RowBuilds of a per-target constant, for the part of a `_rows.cpp` that is compiled once.
#define NUMERIC_ROW_BUILDS(rows)                                                  \
    {                                                                             \
        HWY_CHOOSE_FALLBACK(rows), HWY_CHOOSE_SSSE3(rows), HWY_CHOOSE_SSE4(rows), \
            HWY_CHOOSE_AVX2(rows), HWY_CHOOSE_AVX3(rows)                          \
    }
