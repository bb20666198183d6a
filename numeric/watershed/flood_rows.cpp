#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed/flood_rows.cpp"
#include <algorithm>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/watershed/flood_rows.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using KeyTag = hn::CappedTag<FloodKey, kFloodKeySlack>;
using HalfBytesTag = hn::Rebind<unsigned char, KeyTag>;

HWY_INLINE int keyLanes() {
    return static_cast<int>(hn::Lanes(KeyTag()));
}

void prepare(const unsigned char* relief, const unsigned char* marker, int width, FloodKey* keys,
             FreePixels* free) {
    const KeyTag d;
    const HalfBytesTag db;
    const auto freeKey = hn::Set(d, kFreeKey);
    auto highest = hn::Zero(d);
    int x = 0;
    for (; x + keyLanes() <= width; x += keyLanes()) {
        const auto label = hn::PromoteTo(d, hn::LoadU(db, marker + x));
        const auto level = hn::PromoteTo(d, hn::LoadU(db, relief + x));
        const auto isFree = hn::Eq(label, hn::Zero(d));
        const auto key = hn::IfThenElse(isFree, hn::Add(level, freeKey), label);
        hn::StoreU(key, d, keys + x);
        highest = hn::Max(highest, key);
        free->count += static_cast<std::int64_t>(hn::CountTrue(d, isFree));
    }
    FloodKey found[kFloodKeySlack];
    hn::StoreU(highest, d, found);
    FloodKey highestKey = *std::max_element(found, found + keyLanes());
    for (; x < width; ++x) {
        const bool isFree = marker[x] == 0;
        keys[x] = static_cast<FloodKey>(isFree ? kFreeKey + relief[x] : marker[x]);
        highestKey = std::max(highestKey, keys[x]);
        free->count += isFree ? 1 : 0;
    }
    free->highest = std::max(free->highest, highestKey - kFreeKey);
}

void listSeeds(const FloodKey* keys, std::ptrdiff_t stride, const unsigned char* relief, int width,
               int firstLevel, int lastLevel, int pixel, int** listEnds) {
    const KeyTag d;
    const auto freeKey = hn::Set(d, kFreeKey);
    const auto lastLabelled = hn::Set(d, kFreeKey - 1);
    for (int x = 0; x < width; x += keyLanes()) {
        const auto load = [&](std::ptrdiff_t offset) { return hn::LoadU(d, keys + x + offset); };
        const auto besides = hn::Max(load(-1), load(1));
        const auto above = hn::Max(hn::Max(load(-stride - 1), load(-stride)), load(-stride + 1));
        const auto below = hn::Max(hn::Max(load(stride - 1), load(stride)), load(stride + 1));
        const auto around = hn::Max(hn::Max(above, below), besides);
        const auto isHit = hn::And(hn::Lt(load(0), freeKey), hn::Gt(around, lastLabelled));
        if (hn::AllFalse(d, isHit)) continue;
        FloodKey hit[kFloodKeySlack];
        hn::StoreU(hn::VecFromMask(d, isHit), d, hit);
        for (int i = 0; i < std::min(keyLanes(), width - x); ++i) {
            const int level = relief[x + i];
            if (hit[i] != 0 && level >= firstLevel && level <= lastLevel)
                *listEnds[level]++ = pixel + x + i;
        }
    }
}

void readLabels(const FloodKey* keys, unsigned char* marker, int width) {
    const KeyTag d;
    const HalfBytesTag db;
    const auto freeKey = hn::Set(d, kFreeKey);
    int x = 0;
    for (; x + keyLanes() <= width; x += keyLanes()) {
        const auto key = hn::LoadU(d, keys + x);
        const auto label = hn::IfThenElseZero(hn::Lt(key, freeKey), key);
        hn::StoreU(hn::DemoteTo(db, label), db, marker + x);
    }
    for (; x < width; ++x) marker[x] = static_cast<unsigned char>(keys[x] < kFreeKey ? keys[x] : 0);
}

}  // namespace

constexpr FloodRows kRows = {prepare, listSeeds, readLabels};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<FloodRows> kFloodBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
