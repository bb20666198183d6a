#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/sweep_rows.cpp"
#include <algorithm>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/arrival.h"
#include "numeric/sweep_rows.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using KeyTag = hn::CappedTag<SweepKey, kSweepMargin>;
using Keys = hn::Vec<KeyTag>;

constexpr SweepKey kLabelMask = (1 << kLabelBits) - 1;

HWY_INLINE int keyLanes() {
    return static_cast<int>(hn::Lanes(KeyTag()));
}

// The orders: the key that arrives over a side neighbour and the smaller of the corners beside it.
// No arrival is below kFarKey if neither key is.

struct Steps {
    static HWY_INLINE Keys arrive(Keys side, Keys corner) {
        const KeyTag d;
        return hn::Add(hn::Min(side, corner), hn::Set(d, 1 << kLabelBits));
    }
    static HWY_INLINE SweepKey arrive(SweepKey side, SweepKey corner) {
        return (side < corner ? side : corner) + (1 << kLabelBits);
    }
};

struct SideSteps {
    static HWY_INLINE Keys arrive(Keys side, Keys) {
        const KeyTag d;
        return hn::Add(side, hn::Set(d, 1 << kLabelBits));
    }
    static HWY_INLINE SweepKey arrive(SweepKey side, SweepKey) { return side + (1 << kLabelBits); }
};

struct Marching {
    static HWY_INLINE Keys arrive(Keys side, Keys corner) {
        const KeyTag d;
        const hn::Rebind<float, KeyTag> df;
        const auto sideDistance = hn::ShiftRight<kLabelBits>(side);
        const auto lead = hn::Sub(sideDistance, hn::ShiftRight<kLabelBits>(corner));
        const auto positive = hn::Max(lead, hn::Zero(d));
        const auto used = hn::Min(positive, hn::Set(d, kLargestLead));
        // Exact but for the root, which is too far from any half to be rounded the wrong way.
        const auto usedFloat = hn::ConvertTo(df, used);
        const auto square = hn::Sub(hn::Set(df, static_cast<float>(kSideDistance * kSideDistance)),
                                    hn::Mul(usedFloat, usedFloat));
        const auto advance = hn::NearestInt(hn::Sqrt(square));
        const auto distance = hn::Add(hn::Add(hn::Sub(sideDistance, positive), used), advance);
        const auto isOfCorner = hn::Gt(lead, hn::Set(d, kLargestLeadOfSide));
        const auto label =
            hn::And(hn::IfThenElse(isOfCorner, corner, side), hn::Set(d, kLabelMask));
        return hn::Or(hn::ShiftLeft<kLabelBits>(distance), label);
    }
    static HWY_INLINE SweepKey arrive(SweepKey side, SweepKey corner) {
        const int sideDistance = side >> kLabelBits;
        const int cornerDistance = corner >> kLabelBits;
        const bool isOfCorner = sideDistance - cornerDistance > kLargestLeadOfSide;
        return arrival(sideDistance, cornerDistance) << kLabelBits |
               ((isOfCorner ? corner : side) & kLabelMask);
    }
};

HWY_INLINE hn::Mask<KeyTag> isFree(const unsigned char* free) {
    const KeyTag d;
    const hn::Rebind<unsigned char, KeyTag> db;
    return hn::Ne(hn::PromoteTo(d, hn::LoadU(db, free)), hn::Zero(d));
}

HWY_INLINE SweepKey smallerOf(const SweepKey* above, const SweepKey* below, int x) {
    return std::min(above[x], below[x]);
}

// Along the row from x on, to the end of its vector and further as long as keys get smaller.
template <class Order, int kDirection>
HWY_INLINE bool runAlong(const SweepRow& row, int x, int end) {
    bool changed = false;
    SweepKey key = row.keys[x - kDirection];
    for (;; x += kDirection) {
        const bool isInside = kDirection > 0 ? x < end : x >= end;
        const SweepKey old = row.keys[x];
        const SweepKey corner = smallerOf(row.above, row.below, x - kDirection);
        const SweepKey arriving = Order::arrive(key, corner);
        const bool isSmaller = arriving < old && row.free[x] != 0;
        if (!isInside && !isSmaller) return changed;
        key = isSmaller ? arriving : old;
        row.keys[x] = key;
        changed |= isSmaller;
    }
}

template <class Order>
HWY_INLINE Keys arrivalAlong(const SweepRow& row, int x) {
    const KeyTag d;
    const auto corner = hn::Min(hn::LoadU(d, row.above + x), hn::LoadU(d, row.below + x));
    return Order::arrive(hn::LoadU(d, row.keys + x), corner);
}

template <class Order>
HWY_INLINE Keys arrivalAcross(const SweepKey* neighbours, int x) {
    const KeyTag d;
    const auto corner = hn::Min(hn::LoadU(d, neighbours + x - 1), hn::LoadU(d, neighbours + x + 1));
    return Order::arrive(hn::LoadU(d, neighbours + x), corner);
}

template <class Order>
HWY_INLINE bool relax(const SweepRow& row, const SweepKey* neighbours, unsigned char* flags) {
    const KeyTag d;
    const int lanes = keyLanes();
    bool changed = false;
    for (int x = 0; x < row.width; x += lanes) {
        const auto free = isFree(row.free + x);
        if (hn::AllFalse(d, free)) continue;
        const auto old = hn::LoadU(d, row.keys + x);
        const auto arriving = arrivalAcross<Order>(neighbours, x);
        const auto isSmaller = hn::And(free, hn::Lt(arriving, old));
        if (hn::AllFalse(d, isSmaller)) continue;
        hn::StoreU(hn::IfThenElse(isSmaller, arriving, old), d, row.keys + x);
        changed = true;
    }
    // Only few vectors need the slow way along the row, one pixel after the other.
    for (int x = 0; x < row.width; x += lanes) {
        const auto free = isFree(row.free + x);
        unsigned char& runsLeft = flags[x / lanes];
        runsLeft = 0;
        if (hn::AllFalse(d, free)) continue;
        const auto old = hn::LoadU(d, row.keys + x);
        const auto fromLeft = hn::Lt(arrivalAlong<Order>(row, x - 1), old);
        const auto fromRight = hn::Lt(arrivalAlong<Order>(row, x + 1), old);
        runsLeft = !hn::AllFalse(d, hn::And(free, fromRight));
        if (!hn::AllFalse(d, hn::And(free, fromLeft)))
            changed |= runAlong<Order, 1>(row, x, x + lanes);
    }
    for (int x = (row.width - 1) / lanes * lanes; x >= 0; x -= lanes)
        if (flags[x / lanes]) changed |= runAlong<Order, -1>(row, x + lanes - 1, x);
    return changed;
}

template <class Order>
bool relaxFromAbove(const SweepRow& row, unsigned char* flags) {
    return relax<Order>(row, row.above, flags);
}

template <class Order>
bool relaxFromBelow(const SweepRow& row, unsigned char* flags) {
    return relax<Order>(row, row.below, flags);
}

template <class Order>
bool settle(const SweepRow& row, bool* isLong) {
    const KeyTag d;
    const int lanes = keyLanes();
    const auto far = hn::Set(d, kFarKey);
    auto longest = hn::Zero(d);
    bool changed = false;
    for (int x = 0; x < row.width; x += lanes) {
        const auto free = isFree(row.free + x);
        if (hn::AllFalse(d, free)) continue;
        const auto old = hn::LoadU(d, row.keys + x);
        const auto across =
            hn::Min(arrivalAcross<Order>(row.above, x), arrivalAcross<Order>(row.below, x));
        const auto along =
            hn::Min(arrivalAlong<Order>(row, x - 1), arrivalAlong<Order>(row, x + 1));
        const auto arriving = hn::Min(hn::Min(across, along), far);
        longest = hn::Max(longest, hn::IfThenZeroElse(hn::Eq(arriving, far), arriving));
        const auto isOther = hn::And(free, hn::Ne(arriving, old));
        if (hn::AllFalse(d, isOther)) continue;
        hn::StoreU(hn::IfThenElse(isOther, arriving, old), d, row.keys + x);
        changed = true;
    }
    if (hn::GetLane(hn::MaxOfLanes(d, longest)) >= kLongKey) *isLong = true;
    return changed;
}

template <class Order>
constexpr SweepOrder makeOrder() {
    return {relaxFromAbove<Order>, relaxFromBelow<Order>, settle<Order>};
}

void prepare(const unsigned char* relief, const unsigned char* marker, int width,
             unsigned char freeLevel, SweepKey* keys, unsigned char* free, SweepKinds* kinds) {
    int otherLevels = 0;
    unsigned char smallest = kinds->smallestHigh;
    unsigned char largest = kinds->largestHigh;
    for (int x = 0; x < width; ++x) {
        const unsigned char label = marker[x];
        const bool isHigh = label != 0 && relief[x] > freeLevel;
        free[x] = label == 0 ? 255 : 0;
        otherLevels |= label == 0 && relief[x] != freeLevel ? 1 : 0;
        keys[x] = label == 0 || isHigh ? kFarKey : label;
        smallest = std::min<unsigned char>(smallest, isHigh ? label : 255);
        largest = std::max<unsigned char>(largest, isHigh ? label : 0);
    }
    kinds->otherLevels |= otherLevels != 0;
    kinds->smallestHigh = smallest;
    kinds->largestHigh = largest;
}

void readLabels(const SweepKey* keys, unsigned char highLabel, unsigned char* marker, int width) {
    for (int x = 0; x < width; ++x) {
        const unsigned char label =
            keys[x] >= kFarKey ? highLabel : static_cast<unsigned char>(keys[x] & kLabelMask);
        marker[x] = marker[x] == 0 ? label : marker[x];
    }
}

}  // namespace

constexpr SweepRows kRows = {makeOrder<Steps>(), makeOrder<SideSteps>(), makeOrder<Marching>(),
                             prepare, readLabels};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<SweepRows> kSweepBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
