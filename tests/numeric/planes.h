#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "numeric/numeric.h"

#if defined(__has_feature)  // clang's way to say what is __SANITIZE_ADDRESS__ elsewhere
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(start, size) (static_cast<void>(start), static_cast<void>(size))
#define ASAN_UNPOISON_MEMORY_REGION(start, size) (static_cast<void>(start), static_cast<void>(size))
#endif

/// What the kernel tests share: planes that notice a write outside their region, and under the
/// address sanitizer a read as well; a walk over the variant slots.
namespace numeric::test {

/// Where a test plane's rows lie: how many bytes follow each row, and how far the first pixel is
/// from a 64-byte boundary.
struct Layout {
    int paddingBytes = 0;
    int offsetBytes = 0;
};

/// A plane inside a larger block. All bytes that are no pixels carry a poison.
template <class Pixel>
class TestPlane {
public:
    TestPlane(int width, int height, Layout layout = {})
        : m_width(width),
          m_height(height),
          m_step(width * static_cast<int>(sizeof(Pixel)) + layout.paddingBytes),
          m_bytes(static_cast<std::size_t>(m_step) * height + 4 * kGuard, kPoison) {
        const auto address = reinterpret_cast<std::uintptr_t>(m_bytes.data() + kGuard);
        m_start = kGuard + (kGuard - address % kGuard) % kGuard + layout.offsetBytes;
        fill(Pixel{});
        forbidSurroundings();
    }
    ~TestPlane() { ASAN_UNPOISON_MEMORY_REGION(m_bytes.data(), m_bytes.size()); }
    // A copied block may lie differently about the boundary; a copy takes the pixels only.
    TestPlane(const TestPlane& other)
        : TestPlane(other.m_width, other.m_height,
                    {other.m_step - other.m_width * static_cast<int>(sizeof(Pixel)),
                     static_cast<int>(reinterpret_cast<std::uintptr_t>(other.data()) % kGuard)}) {
        for (int y = 0; y < m_height; ++y) std::copy_n(other.row(y), m_width, row(y));
    }
    TestPlane& operator=(const TestPlane&) = delete;

    int width() const { return m_width; }
    int height() const { return m_height; }
    int step() const { return m_step; }
    Pixel* data() { return row(0); }
    const Pixel* data() const { return row(0); }
    Pixel* row(int y) { return reinterpret_cast<Pixel*>(m_bytes.data() + rowStart(y)); }
    const Pixel* row(int y) const {
        return reinterpret_cast<const Pixel*>(m_bytes.data() + rowStart(y));
    }
    Pixel& at(int x, int y) { return row(y)[x]; }
    Pixel at(int x, int y) const { return row(y)[x]; }

    void fill(Pixel value) {
        for (int y = 0; y < m_height; ++y) std::fill_n(row(y), m_width, value);
    }
    /// Every pixel becomes make(x, y).
    template <class Make>
    TestPlane& set(Make make) {
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x) at(x, y) = make(x, y);
        return *this;
    }

    /// Whether every byte that is no pixel still carries the poison.
    bool surroundingsIntact() const {
        ASAN_UNPOISON_MEMORY_REGION(m_bytes.data(), m_bytes.size());
        std::vector<unsigned char> bytes = m_bytes;
        forbidSurroundings();
        for (int y = 0; y < m_height; ++y)
            std::memset(bytes.data() + rowStart(y), kPoison, m_width * sizeof(Pixel));
        return std::all_of(bytes.begin(), bytes.end(), [](int byte) { return byte == kPoison; });
    }

private:
    static constexpr std::size_t kGuard = 64;
    static constexpr unsigned char kPoison = 0xA5;

    std::size_t rowStart(int y) const { return m_start + static_cast<std::size_t>(y) * m_step; }

    /// The sanitizer knows eight bytes at a time: those before the first pixel of a row that share
    /// them with it stay readable.
    void forbidSurroundings() const {
        std::size_t end = 0;
        for (int y = 0; y <= m_height; ++y) {
            const std::size_t next = y < m_height ? rowStart(y) : m_bytes.size();
            if (end < next) ASAN_POISON_MEMORY_REGION(m_bytes.data() + end, next - end);
            end = next + m_width * sizeof(Pixel);
        }
    }

    int m_width, m_height, m_step;
    std::vector<unsigned char> m_bytes;
    std::size_t m_start = 0;
};

using BytePlane = TestPlane<unsigned char>;
using FloatPlane = TestPlane<float>;

/// Scratch of exactly the size that a kernel reports, so many bytes off a 64-byte boundary, filled
/// with what nobody expects. At its end it looks whether anything was written beside it.
class TestScratch : public BytePlane {
public:
    using SizeRoutine = KernelStatus(int width, int height, int* size);
    TestScratch(SizeRoutine sizeRoutine, int width, int height, int offsetBytes = 1)
        : BytePlane(sizeFor(sizeRoutine, width, height), 1, {0, offsetBytes}) {
        fill(0x7F);
    }
    ~TestScratch() { EXPECT_TRUE(surroundingsIntact()) << "written beside the scratch"; }

private:
    static int sizeFor(SizeRoutine sizeRoutine, int width, int height) {
        int size = 0;
        EXPECT_EQ(sizeRoutine(width, height, &size), Success);
        return size;
    }
};

template <class Pixel>
std::string toText(const TestPlane<Pixel>& plane) {
    std::ostringstream text;
    for (int y = 0; y < plane.height(); ++y) {
        for (int x = 0; x < plane.width(); ++x) text << +plane.at(x, y) << ' ';
        text << '\n';
    }
    return text.str();
}

/// Same size, the same bits in every pixel, and nothing written beside the actual ones. Prints the
/// first difference, and small planes whole.
template <class Pixel>
::testing::AssertionResult samePixels(const TestPlane<Pixel>& expected,
                                      const TestPlane<Pixel>& actual) {
    if (expected.width() != actual.width() || expected.height() != actual.height())
        return ::testing::AssertionFailure() << "the planes differ in size";
    if (!actual.surroundingsIntact())
        return ::testing::AssertionFailure() << "bytes beside the pixels were written";
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x) {
            if (std::memcmp(expected.row(y) + x, actual.row(y) + x, sizeof(Pixel)) == 0) continue;
            auto failure = ::testing::AssertionFailure();
            failure << "at (" << x << ", " << y << ") of " << expected.width() << " x "
                    << expected.height() << ": expected " << +expected.at(x, y) << ", got "
                    << +actual.at(x, y);
            if (expected.width() <= 24 && expected.height() <= 24)
                failure << "\nexpected\n" << toText(expected) << "got\n" << toText(actual);
            return failure;
        }
    }
    return ::testing::AssertionSuccess();
}

inline constexpr int kSlots = 6;
/// For each slot a processor code that selects it.
inline constexpr std::array<int, kSlots> kCodeOfSlot = {-1, 6, 8, 33, 35, 70};

/// Selects a slot for a scope; slot 0 is back at its end.
class SlotScope {
public:
    explicit SlotScope(int slot) { selectVariant(kCodeOfSlot[slot]); }
    ~SlotScope() { selectVariant(kCodeOfSlot[0]); }
    SlotScope(const SlotScope&) = delete;
    SlotScope& operator=(const SlotScope&) = delete;
};

/// Runs check once per slot, failures named after the slot.
template <class Check>
void forEachSlot(Check check) {
    for (int slot = 0; slot < kSlots; ++slot) {
        const SlotScope scope(slot);
        SCOPED_TRACE("slot " + std::to_string(slot));
        check();
    }
}

/// Layouts that rows meet in practice and worse: packed, padded, and off every boundary.
template <class Pixel>
std::vector<Layout> layouts() {
    const int size = sizeof(Pixel);
    return {{0, 0}, {3 * size, size}, {61 * size, 7 * size}};
}

/// Widths around every vector length, and a few longer ones that are no multiple of one.
inline std::vector<int> widths() {
    std::vector<int> result;
    for (int width = 1; width <= 67; ++width) result.push_back(width);
    result.insert(result.end(), {127, 128, 129, 255, 256, 257, 321});
    return result;
}

}  // namespace numeric::test
