#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "numeric/numeric.h"

namespace numeric {
namespace {

//   heap block start          aligned block
//   |<-- distance, 4 to 35 -->|<-- byteCount -->|
//                      [ tag ]
// The tag, in the 4 bytes before the aligned block, holds the distance back to the start: unlike
// the address itself, that fits 4 bytes on every machine.
constexpr int kAlignment = 32;
using Tag = std::uint32_t;
constexpr int kOverhead = kAlignment + static_cast<int>(sizeof(Tag));

/// Asks for huge pages where a block holds whole ones: cheaper to touch for the first time, and to
/// look up for kernels that do not go row by row. Nothing hangs on whether the advice is taken.
void adviseHugePages(void* start, std::size_t bytes) {
#ifdef MADV_HUGEPAGE
    constexpr std::uintptr_t kHugePage = std::uintptr_t{1} << 21;
    const auto address = reinterpret_cast<std::uintptr_t>(start);
    const std::uintptr_t first = (address + kHugePage - 1) / kHugePage * kHugePage;
    const std::uintptr_t end = (address + bytes) / kHugePage * kHugePage;
    if (first < end)
        static_cast<void>(madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE));
#else
    static_cast<void>(start);
    static_cast<void>(bytes);
#endif
}

}  // namespace

void* allocAligned(int byteCount) {
    if (byteCount <= 0 || byteCount > std::numeric_limits<int>::max() - kOverhead) return nullptr;
    const std::size_t bytes = static_cast<std::size_t>(byteCount) + kOverhead;
    void* start = std::malloc(bytes);
    if (!start) return nullptr;
    adviseHugePages(start, bytes);

    const auto address = reinterpret_cast<std::uintptr_t>(start);
    const std::uintptr_t aligned =
        (address + sizeof(Tag) + kAlignment - 1) & ~static_cast<std::uintptr_t>(kAlignment - 1);
    const Tag distance = static_cast<Tag>(aligned - address);
    unsigned char* block = static_cast<unsigned char*>(start) + distance;
    std::memcpy(block - sizeof(Tag), &distance, sizeof(Tag));
    return block;
}

void freeAligned(void* block) {
    if (!block) return;
    unsigned char* bytes = static_cast<unsigned char*>(block);
    Tag distance;
    std::memcpy(&distance, bytes - sizeof(Tag), sizeof(Tag));
    std::free(bytes - distance);
}

float* allocFloatImage(int width, int height, int* step) {
    if (!step) return nullptr;
    *step = 0;
    if (width < 1 || height < 1) return nullptr;

    const std::int64_t rowBytes = static_cast<std::int64_t>(width) * sizeof(float);
    const std::int64_t rowStep = (rowBytes + kAlignment - 1) & ~std::int64_t{kAlignment - 1};
    if (rowStep > std::numeric_limits<int>::max() / height) return nullptr;
    void* image = allocAligned(static_cast<int>(rowStep) * height);
    if (image) *step = static_cast<int>(rowStep);
    return static_cast<float*>(image);
}

void freeFloatImage(void* image) {
    freeAligned(image);
}

}  // namespace numeric
