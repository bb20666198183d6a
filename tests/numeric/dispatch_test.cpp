#include "numeric/base/dispatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "numeric/deconvolution/deconv_fft_rows.h"
#include "numeric/deconvolution/deconv_lr_rows.h"
#include "numeric/distance/distance_rows.h"
#include "numeric/elementwise/elementwise_rows.h"
#include "numeric/labelling/label_rows.h"
#include "numeric/reconstruction/peak_step_rows.h"
#include "numeric/watershed/front_rows.h"
#include "numeric/watershed/tile_rows.h"
#include "numeric/watershed/watershed_rows.h"
#include "planes.h"

namespace numeric {
namespace {

struct Row {
    std::set<int> codes;
    int index;
    int level;
};

// A second, independent writing of the code table.
const std::vector<Row> kRows = {
    {{-1, 0, 1, 2, 3, 4, 5, 16, 64, 96}, 0, 0},
    {{6, 7, 9, 17, 65}, 1, 1},
    {{8, 10, 11, 32, 66}, 2, 1},
    {{33, 34, 67}, 3, 1},
    {{36}, 3, 2},
    {{35, 37, 38, 68, 69}, 4, 1},
    {{70}, 5, 1},
};

const Row* rowOf(int code) {
    for (const Row& row : kRows)
        if (row.codes.count(code)) return &row;
    return nullptr;
}

// The first test of the process: nothing has selected a variant yet.
TEST(Dispatch, FreshProcessRunsSlotZero) {
    EXPECT_EQ(variantIndex(), 0);
    EXPECT_EQ(variantLevel(), 0);
}

TEST(Dispatch, EveryCodeSelectsItsVariantOrChangesNothing) {
    for (const int before : {-1, 36, 70}) {
        for (int code = -130; code <= 230; ++code) {
            ASSERT_EQ(selectVariant(before), 0);
            const Row* row = rowOf(code);
            EXPECT_EQ(selectVariant(code), row ? 0 : 21) << "code " << code;
            EXPECT_EQ(variantIndex(), (row ? row : rowOf(before))->index) << "code " << code;
            EXPECT_EQ(variantLevel(), (row ? row : rowOf(before))->level) << "code " << code;
        }
    }
    EXPECT_EQ(selectVariant(std::numeric_limits<int>::min()), 21);
    EXPECT_EQ(selectVariant(std::numeric_limits<int>::max()), 21);
    selectVariant(-1);
}

TEST(Dispatch, SlotZeroAdaptsAndNoSlotExceedsTheProcessor) {
    const Build builds[] = {Portable, Ssse3, Sse4, Avx2, Avx512};
    for (const Build best : builds) {
        EXPECT_EQ(buildOfSlot(0, best), best);
        for (int slot = 1; slot < kSlotCount; ++slot)
            EXPECT_EQ(buildOfSlot(slot, best), std::min(builds[slot - 1], best));
    }
}

struct FakeRows {
    int number;
};
const FakeRows kFakes[] = {{0}, {1}, {2}, {3}, {4}};

std::vector<int> numbers(const SlotTable<FakeRows>& table) {
    std::vector<int> result;
    for (int slot = 0; slot < kSlotCount; ++slot) result.push_back(table.inSlot(slot).number);
    return result;
}

TEST(Dispatch, SlotsNameTheirBuildOrTheNextLowerOneThereIs) {
    const RowBuilds<FakeRows> all = {kFakes, kFakes + 1, kFakes + 2, kFakes + 3, kFakes + 4};
    const RowBuilds<FakeRows> some = {kFakes, nullptr, kFakes + 2, nullptr, nullptr};
    const SlotTable<FakeRows> table(all, kSixBuilds, Avx512);
    using Numbers = std::vector<int>;
    EXPECT_EQ(numbers(table), (Numbers{4, 0, 1, 2, 3, 4}));
    EXPECT_EQ(numbers(SlotTable<FakeRows>(all, {0, 1, 1, 3, 4, 4}, Avx512)),
              (Numbers{4, 0, 0, 2, 3, 3}));
    EXPECT_EQ(numbers(SlotTable<FakeRows>(all, kSixBuilds, Sse4)), (Numbers{2, 0, 1, 2, 2, 2}));
    EXPECT_EQ(numbers(SlotTable<FakeRows>(some, kSixBuilds, Avx512)), (Numbers{2, 0, 0, 2, 2, 2}));
    Numbers selected;
    test::forEachSlot([&] { selected.push_back(table.selected().number); });
    EXPECT_EQ(selected, numbers(table));
}

TEST(Dispatch, EveryKernelGroupsItsSlotsAsTabled) {
    // Slots that share one build are joined by '/'.
    const auto text = [](const SlotGrouping& found) {
        std::string all = "0";
        for (int slot = 1; slot < kSlotCount; ++slot)
            all += (found[slot] == found[slot - 1] ? "/" : " ") + std::to_string(slot);
        return all;
    };
    EXPECT_EQ(text(kSubtractScalarSlots.grouping()), "0 1 2 3 4/5");
    EXPECT_EQ(text(kSubtractSlots.grouping()), "0 1/2 3 4/5");
    const SlotGrouping others[] = {
        kThresholdFloatSlots.grouping(),  kMaximumSlots.grouping(),
        kBitwiseOrSlots.grouping(),       kByteThresholdsSlots.grouping(),
        kDistanceSlots.grouping(),        kLabelSlots.grouping(),
        kPeakStepSlots8.grouping(),       kPeakStepSlots4.grouping(),
        kWatershedSlots.grouping(),       kFrontSlots.grouping(),
        kMarchingTileSlots.grouping(),    kTileSlots8.grouping(),
        kTileSlots4.grouping(),           kDeconvFFTRowSlots.grouping(),
        kDeconvFFTColumnSlots.grouping(), kDeconvLRSlots.grouping()};
    for (const SlotGrouping& found : others)
        EXPECT_EQ(text(found), "0 1 2 3 4 5") << "the one at " << &found - others;
}

}  // namespace
}  // namespace numeric
