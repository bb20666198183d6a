#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>

/// Watches and disturbs the heap as the kernels see it. For executables linked with
/// --wrap=malloc and --wrap=free; include it in one source file only.
namespace numeric::test::heap {

inline int blocks = 0;           ///< allocated and not yet freed
inline int requests = 0;         ///< allocations asked for
inline int failingRequest = -1;  ///< the request, counted from 0, that finds no memory

inline void reset(int failing = -1) {
    requests = 0;
    failingRequest = failing;
}

}  // namespace numeric::test::heap

extern "C" {
void* __real_malloc(std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size) {
    namespace heap = numeric::test::heap;
    if (heap::requests++ == heap::failingRequest) return nullptr;
    void* block = __real_malloc(size);
    if (!block) return nullptr;
    ++heap::blocks;
    // Floats that nobody has written are NaN, so that a result made of them shows.
    return std::memset(block, 0xFF, size);
}

void __wrap_free(void* block) {
    if (block) --numeric::test::heap::blocks;
    __real_free(block);
}
}
