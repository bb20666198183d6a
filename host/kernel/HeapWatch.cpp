#include "host/kernel/HeapWatch.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

#if defined(__GNUC__)
// In the thread's own block from its beginning: finding it must not allocate.
#define FX_INITIAL_EXEC __attribute__((tls_model("initial-exec")))
#else
#define FX_INITIAL_EXEC
#endif
FX_INITIAL_EXEC thread_local unsigned long g_failed = 0;
FX_INITIAL_EXEC thread_local unsigned long g_asked = 0;
FX_INITIAL_EXEC thread_local unsigned long g_failing = 0;
FX_INITIAL_EXEC thread_local unsigned long g_zeroing = 0;  // how many ZeroedHeap live

}  // namespace

unsigned long failedAllocations() noexcept {
    return g_failed;
}

unsigned long failAllocation(unsigned long number) noexcept {
    const unsigned long asked = g_asked;
    g_asked = 0;
    g_failing = number;
    return asked;
}

ZeroedHeap::ZeroedHeap() noexcept {
    ++g_zeroing;
}

ZeroedHeap::~ZeroedHeap() {
    --g_zeroing;
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

// The functions that ask for memory, in the place of the C library's for all of the process: this
// library is found before it. The blocks are those of the C library, whose free() takes them back.

#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}
#pragma GCC visibility pop

namespace {

void* noted(void* block, bool isWanted) noexcept {
    if (!block && isWanted) ++g_failed;
    return block;
}

/// What the C library is asked for: more than any heap has where the allocation is to fail.
std::size_t asked(std::size_t size) noexcept {
    return ++g_asked == g_failing ? SIZE_MAX / 2 : size;
}

void* aligned(std::size_t alignment, std::size_t size) noexcept {
    void* const block = noted(__libc_memalign(alignment, asked(size)), true);
    if (block && g_zeroing) std::memset(block, 0, size);
    return block;
}

bool isPowerOfTwo(std::size_t number) noexcept {
    return number != 0 && (number & (number - 1)) == 0;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size) noexcept {
    return noted(g_zeroing ? __libc_calloc(1, asked(size)) : __libc_malloc(asked(size)), true);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return noted(__libc_calloc(count, asked(size)), true);
}

void* realloc(void* block, std::size_t size) noexcept {
    return noted(__libc_realloc(block, asked(size)), size > 0 || !block);  // else it was freed
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return aligned(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return aligned(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    if (alignment % sizeof(void*) != 0 || !isPowerOfTwo(alignment)) return EINVAL;
    const int errorBefore = errno;
    void* const made = aligned(alignment, size);
    errno = errorBefore;
    if (!made) return ENOMEM;
    *block = made;
    return 0;
}
}
#pragma GCC visibility pop

#endif
