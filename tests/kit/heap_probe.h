#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

/// Watches and disturbs the heap as the code linked into the executable sees it. For executables
/// set up by fx_watch_heap(); include it in one source file only.
namespace heap {

inline int blocks = 0;           ///< from malloc or calloc and not yet freed
inline int requests = 0;         ///< allocations asked for
inline int failingRequest = -1;  ///< the request, counted from 0, that finds no memory

inline void reset(int failing = -1) {
    requests = 0;
    failingRequest = failing;
}

/// Counts a request; false when it is the one that finds no memory.
inline bool grants() {
    return requests++ != failingRequest;
}

}  // namespace heap

// Visible: the linker also hands these names to the shared libraries.
#pragma GCC visibility push(default)
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* block);
void* __real__Znwm(std::size_t size);

void* __wrap_malloc(std::size_t size) {
    void* block = heap::grants() ? __real_malloc(size) : nullptr;
    if (!block) return nullptr;
    ++heap::blocks;
    // Floats that nobody has written are NaN, so that a result made of them shows.
    return std::memset(block, 0xFF, size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    void* block = heap::grants() ? __real_calloc(count, size) : nullptr;
    if (block) ++heap::blocks;
    return block;
}

void __wrap_free(void* block) {
    if (block) --heap::blocks;
    __real_free(block);
}

void* __wrap__Znwm(std::size_t size) {
    if (!heap::grants()) throw std::bad_alloc();
    return __real__Znwm(size);
}

void* __wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t&) {
    return heap::grants() ? __real__Znwm(size) : nullptr;
}
}
#pragma GCC visibility pop
