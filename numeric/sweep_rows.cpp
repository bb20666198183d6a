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

using KeyTag = hn::CappedTag<SweepKey, 16>;
using Keys = hn::Vec<KeyTag>;
using ByteTag = hn::ScalableTag<unsigned char>;

constexpr SweepKey kLabelMask = (1 << kLabelBits) - 1;

HWY_INLINE int keyLanes() {
    return static_cast<int>(hn::Lanes(KeyTag()));
}

// The orders: the key that arrives over a side neighbour and the smaller of the corners beside it.
// No arrival is below kFarKey if neither key is.

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

// Whether anything smaller arrives at the free pixels of a vector along the row.
template <class Order, int kDirection>
HWY_INLINE bool arrivesAlong(const SweepRow& row, int x) {
    const KeyTag d;
    const auto free = isFree(row.free + x);
    if (hn::AllFalse(d, free)) return false;
    const auto arriving = arrivalAlong<Order>(row, x - kDirection);
    return !hn::AllFalse(d, hn::And(free, hn::Lt(arriving, hn::LoadU(d, row.keys + x))));
}

template <class Order>
HWY_INLINE bool relax(const SweepRow& row, const SweepKey* neighbours) {
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
    for (int x = 0; x < row.width; x += lanes)
        if (arrivesAlong<Order, 1>(row, x)) changed |= runAlong<Order, 1>(row, x, x + lanes);
    for (int x = (row.width - 1) / lanes * lanes; x >= 0; x -= lanes)
        if (arrivesAlong<Order, -1>(row, x)) changed |= runAlong<Order, -1>(row, x + lanes - 1, x);
    return changed;
}

template <class Order>
bool relaxFromAbove(const SweepRow& row) {
    return relax<Order>(row, row.above);
}

template <class Order>
bool relaxFromBelow(const SweepRow& row) {
    return relax<Order>(row, row.below);
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

void prepareKeys(const unsigned char* relief, const unsigned char* marker, int width,
                 unsigned char freeLevel, SweepKey* keys) {
    const KeyTag d;
    const hn::Rebind<unsigned char, KeyTag> db;
    const auto level = hn::Set(d, freeLevel);
    const auto far = hn::Set(d, kFarKey);
    int x = 0;
    for (; x + keyLanes() <= width; x += keyLanes()) {
        const auto label = hn::PromoteTo(d, hn::LoadU(db, marker + x));
        const auto isHigh = hn::Gt(hn::PromoteTo(d, hn::LoadU(db, relief + x)), level);
        const auto isFar = hn::Or(isHigh, hn::Eq(label, hn::Zero(d)));
        hn::StoreU(hn::IfThenElse(isFar, far, label), d, keys + x);
    }
    for (; x < width; ++x) keys[x] = marker[x] == 0 || relief[x] > freeLevel ? kFarKey : marker[x];
}

void prepare(const unsigned char* relief, const unsigned char* marker, int width,
             unsigned char freeLevel, SweepKey* keys, unsigned char* free, SweepKinds* kinds) {
    prepareKeys(relief, marker, width, freeLevel, keys);
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto levels = hn::Set(d, freeLevel);
    auto smallest = hn::Set(d, kinds->smallestHigh);
    auto largest = hn::Set(d, kinds->largestHigh);
    auto otherLevels = hn::Zero(d);
    unsigned char lastRelief[HWY_MAX_BYTES];
    unsigned char lastMarker[HWY_MAX_BYTES];
    for (int x = 0; x < width; x += lanes) {
        if (x + lanes > width) {  // filled up with seeds of the free level, which change nothing
            std::fill_n(lastRelief, lanes, freeLevel);
            std::fill_n(lastMarker, lanes, static_cast<unsigned char>(1));
            std::copy(relief + x, relief + width, lastRelief);
            std::copy(marker + x, marker + width, lastMarker);
            relief = lastRelief - x;
            marker = lastMarker - x;
        }
        const auto level = hn::LoadU(d, relief + x);
        const auto label = hn::LoadU(d, marker + x);
        const auto isFree = hn::Eq(label, hn::Zero(d));
        hn::StoreU(hn::VecFromMask(d, isFree), d, free + x);
        otherLevels = hn::Or(otherLevels, hn::IfThenElseZero(isFree, hn::Xor(level, levels)));
        const auto isHigh = hn::Ne(hn::Max(level, levels), levels);
        const auto highLabel = hn::IfThenElseZero(isHigh, label);
        largest = hn::Max(largest, highLabel);
        const auto noLabel = hn::Eq(highLabel, hn::Zero(d));
        smallest = hn::Min(smallest, hn::IfThenElse(noLabel, hn::Set(d, 255), highLabel));
    }
    unsigned char found[HWY_MAX_BYTES];
    hn::StoreU(otherLevels, d, found);
    for (int i = 0; i < lanes; ++i) kinds->otherLevels |= found[i] != 0;
    hn::StoreU(smallest, d, found);
    for (int i = 0; i < lanes; ++i) kinds->smallestHigh = std::min(kinds->smallestHigh, found[i]);
    hn::StoreU(largest, d, found);
    for (int i = 0; i < lanes; ++i) kinds->largestHigh = std::max(kinds->largestHigh, found[i]);
}

void readLabels(const SweepKey* keys, unsigned char highLabel, unsigned char* marker, int width) {
    const KeyTag d;
    const hn::Rebind<unsigned char, KeyTag> db;
    const auto far = hn::Set(d, kFarKey);
    int x = 0;
    for (; x + keyLanes() <= width; x += keyLanes()) {
        const auto seeds = hn::LoadU(db, marker + x);
        const auto isFree = hn::Eq(seeds, hn::Zero(db));
        if (hn::AllFalse(db, isFree)) continue;
        const auto key = hn::LoadU(d, keys + x);
        const auto label = hn::IfThenElse(hn::Eq(key, far), hn::Set(d, highLabel),
                                          hn::And(key, hn::Set(d, kLabelMask)));
        hn::StoreU(hn::IfThenElse(isFree, hn::DemoteTo(db, label), seeds), db, marker + x);
    }
    for (; x < width; ++x)
        if (marker[x] == 0)
            marker[x] =
                keys[x] == kFarKey ? highLabel : static_cast<unsigned char>(keys[x] & kLabelMask);
}

}  // namespace

constexpr SweepRows kRows = {makeOrder<Marching>(), prepare, readLabels};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<SweepRows> kSweepBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
