#pragma once

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// How many allocations of the calling thread have found no memory so far, whoever asked for them:
/// malloc and its kin, or new, in any library of the process. A filter goes on with what it has
/// when an allocation fails, and cannot say so; a host that compares this number before and after
/// knows that the picture cannot be trusted.
///
/// Stays 0 where another library takes the heap's place, as the sanitizers do, and on systems
/// other than those with the GNU C library.
FXKERNELAPI_EXPORT unsigned long failedAllocations() noexcept;

/// For trying what a filter does then: the calling thread's allocation of this number from now on,
/// counted from 1, finds no memory; 0 for none. Returns how many allocations there were since the
/// last such call.
FXKERNELAPI_EXPORT unsigned long failAllocation(unsigned long number) noexcept;

/// While one lives, fresh memory of the calling thread is zero: for libraries that give what lay in
/// memory before where a file has too little. Not where another library takes the heap's place.
class FXKERNELAPI_EXPORT ZeroedHeap {
public:
    ZeroedHeap() noexcept;
    ~ZeroedHeap();
    ZeroedHeap(const ZeroedHeap&) = delete;
    ZeroedHeap& operator=(const ZeroedHeap&) = delete;
};
