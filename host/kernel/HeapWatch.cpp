#include "host/kernel/HeapWatch.h"

#include <cerrno>
#include <cstddef>

namespace {

#if defined(__GNUC__)
// In the thread's own block from its beginning: finding it must not allocate.
__attribute__((tls_model("initial-exec")))
#endif
thread_local unsigned long g_failed = 0;

}  // namespace

unsigned long failedAllocations() noexcept {
    return g_failed;
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

// The functions that ask for memory, in the place of the C library's for all of the process: this
// library is found before it. The blocks are those of the C library, whose free() takes them back.

namespace {

void* noted(void* block, bool isWanted) noexcept {
    if (!block && isWanted) ++g_failed;
    return block;
}

bool isPowerOfTwo(std::size_t number) noexcept {
    return number != 0 && (number & (number - 1)) == 0;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) noexcept {
    return noted(__libc_malloc(size), true);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return noted(__libc_calloc(count, size), true);
}

void* realloc(void* block, std::size_t size) noexcept {
    return noted(__libc_realloc(block, size), size > 0 || !block);  // else it was freed
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return noted(__libc_memalign(alignment, size), true);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return noted(__libc_memalign(alignment, size), true);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    if (alignment % sizeof(void*) != 0 || !isPowerOfTwo(alignment)) return EINVAL;
    const int errorBefore = errno;
    void* const made = noted(__libc_memalign(alignment, size), true);
    errno = errorBefore;
    if (!made) return ENOMEM;
    *block = made;
    return 0;
}
}
#pragma GCC visibility pop

#endif
