#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>

#include "numeric/numeric.h"

namespace numeric {
namespace {

TEST(AlignedMemory, BlocksAreAlignedAndWholeForEverySize) {
    for (const int size : {1, 4, 31, 32, 33, 100, 4096, 100001, 9000001}) {
        void* block = allocAligned(size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 32, 0U);
        std::memset(block, 0xFF, size);  // the last byte is ours, and the tag is not among them
        freeAligned(block);
    }
}

TEST(AlignedMemory, SizesThatCannotBeServedGiveNull) {
    for (const int size : {0, -1, INT_MIN, INT_MAX, INT_MAX - 35})
        EXPECT_EQ(allocAligned(size), nullptr) << size;
    freeAligned(nullptr);
}

TEST(FloatImage, StepIsTheRowRaisedToWholeBlocksOf32Bytes) {
    for (int width = 1; width <= 40; ++width) {
        int step = -1;
        float* image = allocFloatImage(width, 3, &step);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(step, (width + 7) / 8 * 32);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image) % 32, 0U);
        std::memset(image, 0, static_cast<std::size_t>(step) * 3);
        freeFloatImage(image);
    }
}

TEST(FloatImage, RefusalsGiveNullAndStepZero) {
    EXPECT_EQ(allocFloatImage(4, 4, nullptr), nullptr);
    struct {
        int width, height;
    } const sizes[] = {{0, 4},       {4, 0},       {-1, 4},      {4, -1},
                       {INT_MAX, 1}, {1, INT_MAX}, {1 << 29, 1}, {1 << 15, 1 << 14}};
    for (const auto& size : sizes) {
        int step = -1;
        EXPECT_EQ(allocFloatImage(size.width, size.height, &step), nullptr)
            << size.width << " x " << size.height;
        EXPECT_EQ(step, 0);
    }
    freeFloatImage(nullptr);
}

}  // namespace
}  // namespace numeric
