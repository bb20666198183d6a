#include "numeric/watershed/step_label_rows.h"

#include "numeric/watershed/step_key_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed/step_label_rows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/base/lane_shift-inl.h"
#include "numeric/watershed/group_sweep-inl.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

using LabelTag = hn::ScalableTag<unsigned char>;
using Labels = hn::Vec<LabelTag>;
using KeyTag = hn::ScalableTag<std::int32_t>;
using Format = KeyFormat<std::int32_t>;

template <Neighbours kNeighbours>
bool findSources(const SourceRow& row) {
    const KeyTag d;
    const hn::Rebind<unsigned char, KeyTag> db;
    const auto far = hn::Set(d, Format::kFar);
    const auto stepMask = hn::Set(d, (1 << Format::kLevelShift) - 1);
    auto overrun = hn::MaskFromVec(hn::Zero(d));
    forEachGroup(row.free, row.words, [&](int group) {
        const int x = group * static_cast<int>(hn::MaxLanes(KeyTag()));
        const auto keys = hn::LoadU(d, row.keys + x);
        auto sources = hn::Zero(d);
        const auto add = [&](const std::int32_t* neighbours, Source bit) {
            const auto isSource = hn::Lt(hn::LoadU(d, neighbours + x), keys);
            sources = hn::Or(sources, hn::IfThenElseZero(isSource, hn::Set(d, bit)));
        };
        add(row.above, Upper);
        add(row.keys - 1, LeftSide);
        add(row.keys + 1, RightSide);
        add(row.below, Lower);
        if (kNeighbours == Eight) {
            add(row.above - 1, UpperLeft);
            add(row.above + 1, UpperRight);
            add(row.below - 1, LowerLeft);
            add(row.below + 1, LowerRight);
        }
        const auto isSeed = hn::Eq(hn::LoadU(d, row.floors + x), far);
        // A count that has overrun leaves a pixel with no steps of its own.
        const auto noSteps = hn::Eq(hn::And(keys, stepMask), hn::Zero(d));
        overrun = hn::Or(overrun, hn::AndNot(isSeed, noSteps));
        sources = hn::IfThenZeroElse(isSeed, sources);
        hn::StoreU(hn::DemoteTo(db, sources), db, row.sources + x);
    });
    return hn::AllFalse(d, overrun);
}

void findFree(const unsigned char* sources, int width, GroupBits* free) {
    const LabelTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    GroupBits bits = 0;
    int group = 0;
    for (int x = 0; x < width; x += lanes, ++group) {
        const int bit = group & (kBitsPerWord - 1);
        if (bit == 0) bits = 0;
        const bool isFree = !hn::AllTrue(d, hn::Eq(hn::LoadU(d, sources + x), hn::Zero(d)));
        bits |= GroupBits{isFree} << bit;
        free[group / kBitsPerWord] = bits;
    }
}

void prepare(const unsigned char* marker, int width, unsigned char* labels) {
    const LabelTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    for (int x = 0; x < width; x += lanes) {
        const auto seeds = loadBytes(d, marker, x, width, 0);
        const auto isFree = hn::Eq(seeds, hn::Zero(d));
        hn::StoreU(hn::IfThenElse(isFree, hn::Set(d, 255), seeds), d, labels + x);
    }
}

template <Neighbours kNeighbours>
struct LabelRule {
    static constexpr int kLanes = static_cast<int>(hn::MaxLanes(LabelTag()));

    explicit LabelRule(const LabelRow& labelRow) : row(labelRow) {
        fromLeft = hn::Set(d, row.isFromAbove ? UpperLeft : LowerLeft);
        straight = hn::Set(d, row.isFromAbove ? Upper : Lower);
        fromRight = hn::Set(d, row.isFromAbove ? UpperRight : LowerRight);
    }

    HWY_INLINE Labels labelFrom(const unsigned char* label, Labels sources, Labels bit) const {
        const auto barred = hn::VecFromMask(d, hn::Eq(hn::And(sources, bit), hn::Zero(d)));
        return hn::Or(hn::LoadU(d, label), barred);
    }

    HWY_INLINE bool across(int x) const {
        const auto sources = hn::LoadU(d, row.sources + x);
        auto label = labelFrom(row.neighbours + x, sources, straight);
        if (kNeighbours == Eight) {
            label = hn::Min(label, labelFrom(row.neighbours + x - 1, sources, fromLeft));
            label = hn::Min(label, labelFrom(row.neighbours + x + 1, sources, fromRight));
        }
        const auto old = hn::LoadU(d, row.labels + x);
        const auto smaller = hn::Min(old, label);
        if (hn::AllTrue(d, hn::Eq(old, smaller))) return false;
        hn::StoreU(smaller, d, row.labels + x);
        return true;
    }

    template <Direction kDirection, int kCount>
    static HWY_INLINE Labels shifted(Labels v, Labels fill) {
        if constexpr (kDirection == Right)
            return lanesUp<kCount>(LabelTag(), v, fill);
        else
            return lanesDown<kCount>(LabelTag(), v, fill);
    }

    template <Direction kDirection>
    HWY_INLINE bool along(int x) const {
        const auto bit = hn::Set(d, kDirection == Right ? LeftSide : RightSide);
        const auto sources = hn::And(hn::LoadU(d, row.sources + x), bit);
        auto barred = hn::VecFromMask(d, hn::Eq(sources, hn::Zero(d)));
        const auto carry = hn::Set(d, row.labels[kDirection == Right ? x - 1 : x + kLanes]);
        const auto old = hn::LoadU(d, row.labels + x);
        const auto arriving = hn::Or(shifted<kDirection, 1>(old, carry), barred);
        if (hn::AllTrue(d, hn::Eq(old, hn::Min(old, arriving)))) return false;
        auto labels = old;
        composeRuns<kDirection>(labels, barred);
        hn::StoreU(hn::Min(labels, hn::Or(carry, barred)), d, row.labels + x);
        return true;
    }

    // Finds for each lane the smallest label of the run that leads up to it, and whether the way
    // through that run is barred, for runs of twice the length at a time.
    template <Direction kDirection, int kCount = 1>
    HWY_INLINE void composeRuns(Labels& labels, Labels& barred) const {
        if constexpr (kCount < kLanes) {
            const auto label = shifted<kDirection, kCount>(labels, hn::Set(d, 255));
            labels = hn::Min(labels, hn::Or(label, barred));
            barred = hn::Or(barred, shifted<kDirection, kCount>(barred, hn::Zero(d)));
            composeRuns<kDirection, 2 * kCount>(labels, barred);
        }
    }

    HWY_INLINE bool arrives(int from, int to) const {
        const Source bit = to > from ? LeftSide : RightSide;
        return (row.sources[to] & bit) != 0 && row.labels[from] < row.labels[to];
    }

    const LabelRow& row;
    LabelTag d;
    Labels fromLeft;
    Labels straight;
    Labels fromRight;
};

template <Neighbours kNeighbours>
int relaxLabels(const GroupRow& groups, const LabelRow& row) {
    return relax(groups, LabelRule<kNeighbours>(row));
}

}  // namespace

constexpr StepLabelRows kRows = {
    static_cast<int>(hn::MaxLanes(LabelTag())),
    findSources<Eight>,
    findSources<Four>,
    findFree,
    prepare,
    relaxLabels<Eight>,
    relaxLabels<Four>,
};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<StepLabelRows> kStepLabelBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
