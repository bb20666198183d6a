#include "numeric/watershed/step_key_rows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed/step_key_rows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/base/lane_shift-inl.h"
#include "numeric/watershed/group_sweep-inl.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

template <class Key>
using KeyTag = hn::ScalableTag<Key>;
template <class Key>
using Keys = hn::Vec<KeyTag<Key>>;
template <class Key>
using ByteTag = hn::Rebind<unsigned char, KeyTag<Key>>;

template <class Key>
constexpr int kLanesOf = static_cast<int>(hn::MaxLanes(KeyTag<Key>()));
template <class Key>
constexpr Key kFar = KeyFormat<Key>::kFar;

// No sum with kFar is smaller than it.
template <class Key>
HWY_INLINE Keys<Key> plus(Keys<Key> keys, Keys<Key> more) {
    if constexpr (sizeof(Key) == 2)
        return hn::SaturatedAdd(keys, more);
    else
        return hn::Add(keys, more);
}

template <class Key>
HWY_INLINE Key plus(Key key, Key more) {
    if constexpr (sizeof(Key) == 2)
        return static_cast<Key>(std::min<int>(key + more, kFar<Key>));
    else
        return key + more;
}

template <Direction kDirection, int kCount, class Key>
HWY_INLINE Keys<Key> shifted(Keys<Key> v, Keys<Key> fill) {
    if constexpr (kDirection == Right)
        return lanesUp<kCount>(KeyTag<Key>(), v, fill);
    else
        return lanesDown<kCount>(KeyTag<Key>(), v, fill);
}

template <class Key, Neighbours kNeighbours>
struct KeyRule {
    static constexpr int kLanes = kLanesOf<Key>;

    explicit KeyRule(const KeyRow<Key>& keyRow) : row(keyRow), step(hn::Set(d, row.step)) {
        const auto lane = hn::Iota(d, Key{0});
        fromLeft = hn::Mul(hn::Add(lane, hn::Set(d, Key{1})), step);
        fromRight = hn::Mul(hn::Sub(hn::Set(d, Key{kLanes}), lane), step);
    }

    HWY_INLINE bool across(int x) const {
        auto smallest = hn::LoadU(d, row.neighbours + x);
        if (kNeighbours == Eight)
            smallest = hn::Min(smallest, hn::Min(hn::LoadU(d, row.neighbours + x - 1),
                                                 hn::LoadU(d, row.neighbours + x + 1)));
        const auto arriving = hn::Max(plus<Key>(smallest, step), hn::LoadU(d, row.floors + x));
        const auto old = hn::LoadU(d, row.keys + x);
        const auto smaller = hn::Min(old, arriving);
        if (hn::AllTrue(d, hn::Eq(old, smaller))) return false;
        hn::StoreU(smaller, d, row.keys + x);
        return true;
    }

    template <Direction kDirection>
    HWY_INLINE bool along(int x) const {
        const auto carry = hn::Set(d, row.keys[kDirection == Right ? x - 1 : x + kLanes]);
        auto floors = hn::LoadU(d, row.floors + x);
        const auto old = hn::LoadU(d, row.keys + x);
        const auto beside = shifted<kDirection, 1, Key>(old, carry);
        const auto arriving = hn::Max(plus<Key>(beside, step), floors);
        if (hn::AllTrue(d, hn::Eq(old, hn::Min(old, arriving)))) return false;
        auto keys = old;
        composeRuns<kDirection>(keys, floors);
        const auto carried = plus<Key>(carry, kDirection == Right ? fromLeft : fromRight);
        hn::StoreU(hn::Min(keys, hn::Max(carried, floors)), d, row.keys + x);
        return true;
    }

    // Along the row key[i] = min(key[i], max(key[i - 1] + step, floor[i])). To what comes into a
    // run of pixels its last one applies such a rule as well, with a key and a floor of the run;
    // they are found for runs of twice the length at a time, up to the whole vector.
    template <Direction kDirection, int kCount = 1>
    HWY_INLINE void composeRuns(Keys<Key>& keys, Keys<Key>& floors) const {
        if constexpr (kCount < kLanes) {
            const auto length = hn::Set(d, static_cast<Key>(kCount * row.step));
            const auto far = hn::Set(d, kFar<Key>);
            const auto none = hn::Zero(d);
            const auto key = shifted<kDirection, kCount, Key>(plus<Key>(keys, length), far);
            const auto floor = shifted<kDirection, kCount, Key>(plus<Key>(floors, length), none);
            keys = hn::Min(keys, hn::Max(key, floors));
            floors = hn::Max(floors, floor);
            composeRuns<kDirection, 2 * kCount>(keys, floors);
        }
    }

    HWY_INLINE bool arrives(int from, int to) const {
        return std::max(plus<Key>(row.keys[from], row.step), row.floors[to]) < row.keys[to];
    }

    const KeyRow<Key>& row;
    KeyTag<Key> d;
    Keys<Key> step;
    Keys<Key> fromLeft;
    Keys<Key> fromRight;
};

template <class Key, Neighbours kNeighbours>
int relaxKeys(const GroupRow& groups, const KeyRow<Key>& row) {
    return relax(groups, KeyRule<Key, kNeighbours>(row));
}

template <class Key>
void findFree(const unsigned char* marker, int width, GroupBits* free) {
    const ByteTag<Key> d;
    GroupBits bits = 0;
    int group = 0;
    for (int x = 0; x < width; x += kLanesOf<Key>, ++group) {
        const int bit = group & (kBitsPerWord - 1);
        if (bit == 0) bits = 0;
        const auto labels = loadBytes(d, marker, x, width, 1);
        const bool isFree = !hn::AllFalse(d, hn::Eq(labels, hn::Zero(d)));
        bits |= GroupBits{isFree} << bit;
        free[group / kBitsPerWord] = bits;
    }
}

// Behind the end of the row there are seeds from which nothing comes.
template <class Key>
HWY_INLINE void closeRow(const PreparedRow<Key>& row) {
    const int groups = (row.width + kLanesOf<Key> - 1) / kLanesOf<Key>;
    std::fill(row.keys + row.width, row.keys + groups * kLanesOf<Key> + 1, kFar<Key>);
}

template <class Key>
void prepareTwoLevels(const PreparedRow<Key>& row, unsigned char freeLevel, LevelKinds* kinds) {
    const ByteTag<Key> db;
    const KeyTag<Key> d;
    const auto level = hn::Set(db, freeLevel);
    const auto none = hn::Zero(db);
    const auto far = hn::Set(d, kFar<Key>);
    auto others = none;
    auto smallest = hn::Set(db, kinds->smallestHigh);
    auto largest = hn::Set(db, kinds->largestHigh);
    forEachGroup(row.needed, row.words, [&](int group) {
        const int x = group * kLanesOf<Key>;
        const auto label = loadBytes(db, row.marker, x, row.width, 1);
        const auto relief = loadBytes(db, row.relief, x, row.width, freeLevel);
        const auto isHigh = hn::Ne(hn::Max(relief, level), level);
        const auto isFree = hn::Eq(label, none);
        others = hn::Or(others, hn::IfThenElseZero(isFree, hn::Xor(relief, level)));
        const auto highLabel = hn::IfThenElseZero(isHigh, label);
        largest = hn::Max(largest, highLabel);
        const auto noHigh = hn::VecFromMask(db, hn::Eq(highLabel, none));
        smallest = hn::Min(smallest, hn::Or(highLabel, noHigh));
        const auto keys = hn::PromoteTo(d, hn::IfThenZeroElse(isHigh, label));
        hn::StoreU(hn::IfThenElse(hn::Eq(keys, hn::Zero(d)), far, keys), d, row.keys + x);
        const auto isSeed = hn::Ne(hn::PromoteTo(d, label), hn::Zero(d));
        hn::StoreU(hn::IfThenElseZero(isSeed, far), d, row.floors + x);
    });
    closeRow(row);
    unsigned char found[HWY_MAX_BYTES];
    hn::StoreU(others, db, found);
    for (int i = 0; i < kLanesOf<Key>; ++i) kinds->otherLevels |= found[i] != 0;
    hn::StoreU(smallest, db, found);
    for (int i = 0; i < kLanesOf<Key>; ++i)
        kinds->smallestHigh = std::min(kinds->smallestHigh, found[i]);
    hn::StoreU(largest, db, found);
    for (int i = 0; i < kLanesOf<Key>; ++i)
        kinds->largestHigh = std::max(kinds->largestHigh, found[i]);
}

template <class Key>
void prepare(const PreparedRow<Key>& row) {
    const ByteTag<Key> db;
    const KeyTag<Key> d;
    const auto far = hn::Set(d, kFar<Key>);
    forEachGroup(row.needed, row.words, [&](int group) {
        const int x = group * kLanesOf<Key>;
        const auto label = hn::PromoteTo(d, loadBytes(db, row.marker, x, row.width, 1));
        const auto relief = hn::PromoteTo(d, loadBytes(db, row.relief, x, row.width, 0));
        const auto level = hn::ShiftLeft<KeyFormat<Key>::kLevelShift>(relief);
        const auto isFree = hn::Eq(label, hn::Zero(d));
        hn::StoreU(hn::IfThenElse(isFree, far, level), d, row.keys + x);
        const auto afterOneStep = hn::Or(level, hn::Set(d, Key{1}));
        hn::StoreU(hn::IfThenElse(isFree, afterOneStep, far), d, row.floors + x);
    });
    closeRow(row);
}

template <class Key>
void addReach(const Key* keys, const Key* floors, const GroupBits* free, int words, Reach* reach) {
    const KeyTag<Key> d;
    const auto far = hn::Set(d, kFar<Key>);
    auto longest = hn::Zero(d);
    forEachGroup(free, words, [&](int group) {
        const int x = group * kLanesOf<Key>;
        const auto key = hn::LoadU(d, keys + x);
        const auto isFree = hn::Ne(hn::LoadU(d, floors + x), far);
        const auto isFar = hn::Eq(key, far);
        longest = hn::Max(longest, hn::IfThenElseZero(isFree, hn::IfThenZeroElse(isFar, key)));
        reach->free += static_cast<std::int64_t>(hn::CountTrue(d, isFree));
        reach->far += static_cast<std::int64_t>(hn::CountTrue(d, hn::And(isFree, isFar)));
    });
    const auto limit = hn::Set(d, static_cast<Key>(KeyFormat<Key>::kLongSteps << kStepShift));
    reach->isLong |= !hn::AllFalse(d, hn::Eq(hn::Min(longest, limit), limit));
}

template <class Key>
void readLabels(const Key* keys, unsigned char highLabel, const GroupBits* free, int words,
                unsigned char* marker, int width) {
    const ByteTag<Key> db;
    const KeyTag<Key> d;
    const hn::RebindToSigned<KeyTag<Key>> di;
    forEachGroup(free, words, [&](int group) {
        const int x = group * kLanesOf<Key>;
        const auto key = hn::LoadU(d, keys + x);
        const auto isFar = hn::Eq(key, hn::Set(d, kFar<Key>));
        const auto label =
            hn::IfThenElse(isFar, hn::Set(d, Key{highLabel}), hn::And(key, hn::Set(d, Key{255})));
        storeFree(db, hn::DemoteTo(db, hn::BitCast(di, label)), marker, x, width);
    });
}

template <class Key>
constexpr StepKeyRows<Key> makeRows() {
    return {kLanesOf<Key>,         findFree<Key>,        prepareTwoLevels<Key>, prepare<Key>,
            relaxKeys<Key, Eight>, relaxKeys<Key, Four>, addReach<Key>,         readLabels<Key>};
}

}  // namespace

constexpr StepKeyRows<std::uint16_t> kRows16 = makeRows<std::uint16_t>();
constexpr StepKeyRows<std::int32_t> kRows32 = makeRows<std::int32_t>();

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<StepKeyRows<std::uint16_t>> kStepKey16Builds = NUMERIC_ROW_BUILDS(kRows16);
const RowBuilds<StepKeyRows<std::int32_t>> kStepKey32Builds = NUMERIC_ROW_BUILDS(kRows32);
}  // namespace numeric
#endif
