// A visit to the groups of a row that a sweep has reached, for one target at a time.

#if defined(NUMERIC_GROUP_SWEEP_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_GROUP_SWEEP_INL_H_
#undef NUMERIC_GROUP_SWEEP_INL_H_
#else
#define NUMERIC_GROUP_SWEEP_INL_H_
#endif

#include "hwy/highway.h"
#include "numeric/watershed/group_bits.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

enum Neighbours { Four, Eight };
enum Direction { Right = 1, Left = -1 };

HWY_INLINE int lowestBit(GroupBits bits) {
    return __builtin_ctzll(bits);
}
HWY_INLINE int highestBit(GroupBits bits) {
    return kBitsPerWord - 1 - __builtin_clzll(bits);
}

template <class Visit>
HWY_INLINE void forEachGroup(const GroupBits* groups, int words, Visit visit) {
    for (int word = 0; word < words; ++word)
        for (GroupBits bits = groups[word]; bits != 0; bits &= bits - 1)
            visit(word * kBitsPerWord + lowestBit(bits));
}

template <Direction kDirection, class Rule>
HWY_INLINE void relaxAlong(const GroupRow& row, const Rule& rule) {
    constexpr int kEdge = kDirection == Right ? Rule::kLanes - 1 : 0;
    for (int i = 0; i < row.words; ++i) {
        const int word = kDirection == Right ? i : row.words - 1 - i;
        for (GroupBits bits = row.visits[word]; bits != 0;) {
            const int bit = kDirection == Right ? lowestBit(bits) : highestBit(bits);
            bits &= ~(GroupBits{1} << bit);
            const int group = word * kBitsPerWord + bit;
            const int x = group * Rule::kLanes;
            if (rule.template along<kDirection>(x)) row.changed[word] |= GroupBits{1} << bit;
            // On into the next group.
            const int next = group + kDirection;
            const int nextWord = next >> 6;
            if (next < 0 || nextWord >= row.words) continue;
            const GroupBits nextBit = GroupBits{1} << (next & (kBitsPerWord - 1));
            if ((row.free[nextWord] & nextBit) == 0) continue;
            if (!rule.arrives(x + kEdge, x + kEdge + kDirection)) continue;
            row.visits[nextWord] |= nextBit;
            if (nextWord == word) bits |= nextBit;
        }
    }
}

/// Applies a rule across from a neighbouring row, then along the row both ways. What a way back
/// lowers cannot lower anything farther back, so one pass each way settles the row.
///
/// The rule has across(x), along<Direction>(x) for the group that starts at x, both returning
/// whether anything changed, arrives(from, to) for two pixels beside each other, and kLanes.
/// Returns the number of groups visited across.
template <class Rule>
HWY_INLINE int relax(const GroupRow& row, const Rule& rule) {
    int visited = 0;
    for (int word = 0; word < row.words; ++word) {
        GroupBits changed = 0;
        for (GroupBits bits = row.visits[word]; bits != 0; bits &= bits - 1, ++visited)
            if (rule.across((word * kBitsPerWord + lowestBit(bits)) * Rule::kLanes))
                changed |= bits & -bits;
        row.changed[word] = changed;
        if (!row.isFirst) row.visits[word] = changed;
    }
    relaxAlong<Right>(row, rule);
    relaxAlong<Left>(row, rule);
    for (int word = 0; word < row.words; ++word) row.visits[word] = 0;
    return visited;
}

/// The bytes of a group. Behind the end of the row there is `fill`.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V loadBytes(D d, const unsigned char* row, int x, int width, unsigned char fill) {
    constexpr int kLanes = static_cast<int>(hn::MaxLanes(D()));
    if (x + kLanes <= width) return hn::LoadU(d, row + x);
    unsigned char bytes[kLanes];
    for (int i = 0; i < kLanes; ++i) bytes[i] = x + i < width ? row[x + i] : fill;
    return hn::LoadU(d, bytes);
}

/// Writes the labels of the free pixels of a group.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void storeFree(D d, V labels, unsigned char* marker, int x, int width) {
    constexpr int kLanes = static_cast<int>(hn::MaxLanes(D()));
    const auto seeds = loadBytes(d, marker, x, width, 1);
    const auto all = hn::IfThenElse(hn::Eq(seeds, hn::Zero(d)), labels, seeds);
    if (x + kLanes <= width) {
        hn::StoreU(all, d, marker + x);
        return;
    }
    unsigned char bytes[kLanes];
    hn::StoreU(all, d, bytes);
    for (int i = 0; x + i < width; ++i) marker[x + i] = bytes[i];
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#endif
