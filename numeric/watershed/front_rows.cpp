#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed/front_rows.cpp"
#include "numeric/watershed/front_rows.h"

#include <cstring>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/watershed/arrival.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Number = std::uint16_t;
using Tag = hn::ScalableTag<Number>;
using Numbers = hn::Vec<Tag>;

HWY_INLINE int lanesOf() {
    return static_cast<int>(hn::Lanes(Tag()));
}

/// Four numbers of each row around each pixel of a front, of which the last is not used: copied
/// and taken apart as wholes.
class Surroundings {
public:
    static constexpr int kColumns = 4;
    static constexpr std::size_t kSlack = kColumns * hn::MaxLanes(Tag());

    template <class T>
    HWY_INLINE Surroundings(const T* plane, std::ptrdiff_t stride, const Front& front) {
        static_assert(sizeof(T) == sizeof(Number));
        for (int i = 0; i < front.count; ++i) {
            if (i < front.nextCount) {
                const T* next = plane + front.next[i];
                __builtin_prefetch(next - stride);
                __builtin_prefetch(next);
                __builtin_prefetch(next + stride);
            }
            const T* left = plane + front.begin[i] - 1;
            copy(left - stride, m_above, i);
            copy(left, m_row, i);
            copy(left + stride, m_below, i);
        }
        // The last vector may reach past the last pixel.
        for (Number* row : {m_above, m_row, m_below})
            std::memset(row + kColumns * front.count, 0, kSlack * sizeof(Number));
    }

    struct Around {
        Numbers sides[4];    // above, left, right, below
        Numbers corners[4];  // above left, above right, below left, below right
        // The corners beside a side: one and other.
        Numbers one(int side) const { return corners[side < 2 ? 0 : side - 1]; }
        Numbers other(int side) const { return corners[side < 2 ? side + 1 : 3]; }
    };

    /// Around the pixels from the i-th, a lane for each.
    HWY_INLINE Around at(int i) const {
        const Tag d;
        Around a;
        Numbers unused;
        hn::LoadInterleaved4(d, m_above + kColumns * i, a.corners[0], a.sides[0], a.corners[1],
                             unused);
        hn::LoadInterleaved4(d, m_row + kColumns * i, a.sides[1], unused, a.sides[2], unused);
        hn::LoadInterleaved4(d, m_below + kColumns * i, a.corners[2], a.sides[3], a.corners[3],
                             unused);
        return a;
    }

private:
    template <class T>
    static HWY_INLINE void copy(const T* from, Number* row, int i) {
        std::memcpy(row + kColumns * i, from, kColumns * sizeof(Number));
    }

    Number m_above[kColumns * Front::kMost + kSlack];
    Number m_row[kColumns * Front::kMost + kSlack];
    Number m_below[kColumns * Front::kMost + kSlack];
};

HWY_INLINE Numbers set(int number) {
    return hn::Set(Tag(), static_cast<Number>(number));
}

HWY_INLINE Numbers least(const Numbers (&of)[4]) {
    return hn::Min(hn::Min(of[0], of[1]), hn::Min(of[2], of[3]));
}

/// The smaller its number, the lower an open neighbour lies; above the level they are not open.
HWY_INLINE Numbers height(Numbers key) {
    return hn::Sub(key, set(kFreeKey));
}

void reach(const FloodKey* keys, std::ptrdiff_t stride, const Front& front, int level,
           FloodKey* reached) {
    const Tag d;
    const Surroundings surroundings(keys, stride, front);
    HWY_ALIGN Number found[Front::kMost];
    for (int i = 0; i < front.count; i += lanesOf()) {
        auto around = surroundings.at(i);
        // The rim stays above all labels.
        const auto label =
            hn::Min(least(around.sides), hn::SaturatedAdd(least(around.corners), set(kOverCorner)));
        for (auto& side : around.sides) side = height(side);
        for (auto& corner : around.corners) corner = height(corner);
        const auto lowest = hn::Min(least(around.sides), least(around.corners));
        const auto isBesideOpen = hn::Eq(hn::Min(lowest, set(level)), lowest);
        const auto key = hn::Or(hn::Or(label, set(kFirstRing)),
                                hn::IfThenElseZero(isBesideOpen, set(kBesideOpen)));
        const auto isReached = hn::Eq(hn::Min(label, set(kOverCorner + kLabelMask)), label);
        hn::Store(hn::IfThenElseZero(isReached, key), d, found + i);
    }
    std::memcpy(reached, found, static_cast<std::size_t>(front.count) * sizeof(FloodKey));
}

void findOpen(const FloodKey* keys, std::ptrdiff_t stride, const Front& front, int level,
              std::uint16_t* open) {
    const Tag d;
    const Surroundings surroundings(keys, stride, front);
    HWY_ALIGN Number bits[Front::kMost];
    for (int i = 0; i < front.count; i += lanesOf()) {
        const auto around = surroundings.at(i);
        auto found = hn::Zero(d);
        const auto add = [&](Numbers key, int neighbour) {
            const auto isOpen = hn::Eq(hn::Min(height(key), set(level)), height(key));
            found = hn::Or(found, hn::IfThenElseZero(isOpen, set(1 << neighbour)));
        };
        for (int side = 0; side < 4; ++side) add(around.sides[side], side);
        for (int corner = 0; corner < 4; ++corner) add(around.corners[corner], 4 + corner);
        hn::Store(found, d, bits + i);
    }
    std::memcpy(open, bits, static_cast<std::size_t>(front.count) * sizeof(Number));
}

// --- Arrivals

/// advanceAfterSide: roots of whole numbers are too far from the middle between two others to be
/// rounded to the wrong one.
template <class DF>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> nearestAdvance(DF d,
                                                          hn::Vec<hn::RebindToSigned<DF>> lead) {
    const auto x = hn::ConvertTo(d, lead);
    const auto side = hn::Set(d, float{kSideDistance * kSideDistance});
    return hn::NearestInt(hn::Sqrt(hn::Sub(side, hn::Mul(x, x))));
}

HWY_INLINE Numbers advance(Numbers lead) {
    const Tag d;
#if HWY_TARGET == HWY_SCALAR
    return hn::Set(d, kAdvances[hn::GetLane(lead)]);
#else
    const hn::Half<Tag> half;
    const hn::Repartition<float, Tag> df;
    const hn::RebindToSigned<decltype(df)> di;
    const auto lower = nearestAdvance(df, hn::PromoteTo(di, hn::LowerHalf(half, lead)));
    const auto upper = nearestAdvance(df, hn::PromoteTo(di, hn::UpperHalf(half, lead)));
    return hn::Combine(d, hn::DemoteTo(half, upper), hn::DemoteTo(half, lower));
#endif
}

void arrive(const FloodKey* keys, const Number* distances, std::ptrdiff_t stride,
            const Front& front, Number* arrivals, FloodKey* labels) {
    const Tag d;
    const Surroundings distancesAround(distances, stride, front);
    const Surroundings keysAround(keys, stride, front);
    HWY_ALIGN Number firsts[Front::kMost];
    HWY_ALIGN Number settled[Front::kMost];
    const auto none = set(0xFFFF);
    for (int i = 0; i < front.count; i += lanesOf()) {
        const auto distance = distancesAround.at(i);
        const auto key = keysAround.at(i);
        Numbers over[4], label[4];
        for (int side = 0; side < 4; ++side) {
            const auto earlier = hn::Min(distance.one(side), distance.other(side));
            const auto lead = hn::SaturatedSub(distance.sides[side], earlier);
            const auto used = hn::Min(lead, set(kLargestLead));
            over[side] =
                hn::SaturatedAdd(hn::Sub(distance.sides[side], hn::Sub(lead, used)), advance(used));
            const auto ofCorner = hn::Min(
                hn::IfThenElse(hn::Eq(distance.one(side), earlier), key.one(side), none),
                hn::IfThenElse(hn::Eq(distance.other(side), earlier), key.other(side), none));
            const auto isSides = hn::Eq(hn::Min(lead, set(kLargestLeadOfSide)), lead);
            label[side] = hn::IfThenElse(isSides, key.sides[side], ofCorner);
        }
        const auto first = least(over);
        for (int side = 0; side < 4; ++side)
            label[side] = hn::IfThenElse(hn::Eq(over[side], first), label[side], none);
        hn::Store(first, d, firsts + i);
        hn::Store(least(label), d, settled + i);
    }
    std::memcpy(arrivals, firsts, static_cast<std::size_t>(front.count) * sizeof(Number));
    std::memcpy(labels, settled, static_cast<std::size_t>(front.count) * sizeof(Number));
}

}  // namespace

constexpr FrontRows kRows = {reach, findOpen, arrive};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<FrontRows> kFrontBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
