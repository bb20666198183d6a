#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed/watershed_rows.cpp"
#include "numeric/watershed/watershed_rows.h"

#include <algorithm>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/base/neighbours.h"
#include "numeric/base/row_ends-inl.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// --- Two levels

using ByteTag = hn::ScalableTag<unsigned char>;
using Bytes = hn::Vec<ByteTag>;

/// The label of the first pixel of a word above the free level, or 0.
unsigned char firstHighLabel(const unsigned char* relief, const unsigned char* marker,
                             unsigned char freeLevel) {
    for (int i = 0; i < kWordBits; ++i)
        if (relief[i] > freeLevel) return marker[i];
    return 0;
}

/// The bits of a word's free pixels; adds those of its low ones to *low, and collects in *misfits
/// what does not fit.
HWY_INLINE BitWord scanWord(const unsigned char* relief, const unsigned char* marker,
                            const TwoLevels& levels, BitWord* low, Bytes* misfits) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto freeLevel = hn::Set(d, levels.freeLevel);
    const auto highLabel = hn::Set(d, levels.highLabel);
    BitWord free = 0;
    for (int i = 0; i < kWordBits; i += lanes) {
        const auto level = hn::LoadU(d, relief + i);
        const auto label = hn::LoadU(d, marker + i);
        const auto isFree = hn::Eq(label, hn::Zero(d));
        const auto isLow = hn::Eq(hn::Max(level, freeLevel), freeLevel);
        const auto otherHigh = hn::IfThenZeroElse(isLow, hn::Xor(label, highLabel));
        const auto otherLevel = hn::IfThenElseZero(isFree, hn::Xor(level, freeLevel));
        *misfits = hn::Or(*misfits, hn::Or(otherHigh, otherLevel));
        free |= toBits(d, isFree) << i;
        *low |= toBits(d, isLow) << i;
    }
    return free;
}

void scan(const unsigned char* relief, const unsigned char* marker, int width, BitWord* free,
          BitWord* low, TwoLevels* levels) {
    const ByteTag d;
    auto misfits = hn::Zero(d);
    unsigned char lastRelief[kWordBits], lastMarker[kWordBits];
    for (int x = 0; x < width; x += kWordBits) {
        // Filled up with seeds of the free level, which always fit.
        const auto* wordRelief = wholeBytes(relief + x, width - x, levels->freeLevel, lastRelief);
        const auto* wordMarker = wholeBytes(marker + x, width - x, 1, lastMarker);
        if (levels->highLabel == 0)
            levels->highLabel = firstHighLabel(wordRelief, wordMarker, levels->freeLevel);
        BitWord wordLow = 0;
        *free = scanWord(wordRelief, wordMarker, *levels, &wordLow, &misfits);
        const BitWord row = ~BitWord{0} >> std::max(0, kWordBits - (width - x));
        const BitWord seeds = wordLow & ~*free++ & row;
        levels->seeds += __builtin_popcountll(seeds & ~(seeds << 1));
        *low++ = wordLow & row;
    }
    levels->areMixed |= !hn::AllTrue(d, hn::Eq(misfits, hn::Zero(d)));
}

// --- Keys of the queue

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
    const auto noKey = hn::Set(d, kFreeKey + kReliefLevels);
    auto lowest = noKey;
    int x = 0;
    for (; x + keyLanes() <= width; x += keyLanes()) {
        const auto label = hn::PromoteTo(d, hn::LoadU(db, marker + x));
        const auto level = hn::PromoteTo(d, hn::LoadU(db, relief + x));
        const auto isFree = hn::Eq(label, hn::Zero(d));
        const auto key = hn::IfThenElse(isFree, hn::Add(level, freeKey), label);
        hn::StoreU(key, d, keys + x);
        highest = hn::Max(highest, key);
        lowest = hn::Min(lowest, hn::IfThenElse(isFree, key, noKey));
        free->count += static_cast<std::int64_t>(hn::CountTrue(d, isFree));
    }
    FloodKey found[kFloodKeySlack];
    hn::StoreU(highest, d, found);
    for (int i = 0; i < keyLanes(); ++i)
        free->highest = std::max(free->highest, found[i] - kFreeKey);
    hn::StoreU(lowest, d, found);
    for (int i = 0; i < keyLanes(); ++i) free->lowest = std::min(free->lowest, found[i] - kFreeKey);
    for (; x < width; ++x) {
        const bool isFree = marker[x] == 0;
        keys[x] = static_cast<FloodKey>(isFree ? kFreeKey + relief[x] : marker[x]);
        if (!isFree) continue;
        free->highest = std::max(free->highest, int{relief[x]});
        free->lowest = std::min(free->lowest, int{relief[x]});
        ++free->count;
    }
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
            const int level = std::max(int{relief[x + i]}, firstLevel);
            if (hit[i] != 0 && level <= lastLevel) *listEnds[level]++ = pixel + x + i;
        }
    }
}

void readLabels(const FloodKey* keys, unsigned char* marker, int width) {
    const KeyTag d;
    const HalfBytesTag db;
    const auto freeKey = hn::Set(d, kFreeKey);
    const auto labelBits = hn::Set(d, kLabelMask);
    int x = 0;
    for (; x + keyLanes() <= width; x += keyLanes()) {
        const auto key = hn::LoadU(d, keys + x);
        const auto label = hn::IfThenElseZero(hn::Lt(key, freeKey), hn::And(key, labelBits));
        hn::StoreU(hn::DemoteTo(db, label), db, marker + x);
    }
    for (; x < width; ++x)
        marker[x] = static_cast<unsigned char>(keys[x] < kFreeKey ? keys[x] & kLabelMask : 0);
}

// --- Borders

template <Neighbours kNeighbours>
void markBorders(const unsigned char* above, const unsigned char* line, const unsigned char* below,
                 unsigned char* out, int width) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto border = hn::Set(d, 255);
    for (int x = 0; x < width; x += lanes) {
        const auto load = [&](const unsigned char* row, int shift) {
            return hn::LoadU(d, row + x + shift);
        };
        const auto label = load(line, 0);
        auto largest = hn::Max(hn::Max(load(line, -1), load(line, 1)),
                               hn::Max(load(above, 0), load(below, 0)));
        if (kNeighbours == Neighbours::Eight)
            largest = hn::Max(largest, hn::Max(hn::Max(load(above, -1), load(above, 1)),
                                               hn::Max(load(below, -1), load(below, 1))));
        const auto isLargest = hn::Eq(hn::Max(largest, label), label);
        if (hn::AllTrue(d, isLargest)) continue;  // most places are no border: nothing to write
        storeFirst(hn::IfThenElse(isLargest, label, border), d, out + x, width - x);
    }
}

}  // namespace

constexpr WatershedRows kRows = {scan,
                                 prepare,
                                 listSeeds,
                                 readLabels,
                                 markBorders<Neighbours::Four>,
                                 markBorders<Neighbours::Eight>};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<WatershedRows> kWatershedBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
