#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>

#include "numeric/numeric.h"

/// The argument checks of all kernels. Each reports its own errors; firstError() puts them into the
/// documented order: firstError({checkPointers({src, dst}), checkSize(...), checkByteSteps(...)}).
namespace numeric {

inline KernelStatus firstError(std::initializer_list<KernelStatus> checks) {
    for (const KernelStatus status : checks)
        if (status != Success) return status;
    return Success;
}

inline KernelStatus checkPointers(std::initializer_list<const void*> pointers) {
    for (const void* pointer : pointers)
        if (!pointer) return NullPointer;
    return Success;
}

inline KernelStatus checkSize(int width, int height) {
    return width < 1 || height < 1 ? BadSize : Success;
}

inline KernelStatus checkByteSteps(int width, std::initializer_list<int> steps) {
    for (const int step : steps)
        if (step < width) return BadStep;
    return Success;
}

/// BadStep of any plane comes before UnalignedStep of any other.
inline KernelStatus checkFloatSteps(int width, std::initializer_list<int> steps) {
    for (const int step : steps)
        if (step < std::int64_t{4} * width) return BadStep;
    for (const int step : steps)
        if (step % 4 != 0) return UnalignedStep;
    return Success;
}

inline KernelStatus checkArgument(bool isValid) {
    return isValid ? Success : BadArgument;
}

/// What a scratch size routine does: *size receives scratchBytes(width, height), an int64, unless
/// that is more than an int holds.
template <class ScratchBytes>
KernelStatus reportScratchSize(int width, int height, int* size, ScratchBytes scratchBytes) {
    const KernelStatus status = firstError({checkPointers({size}), checkSize(width, height)});
    if (status != Success) return status;
    constexpr std::int64_t kMost = std::numeric_limits<int>::max();
    const std::int64_t bytes = scratchBytes(width, height);
    if (bytes > kMost) return BadSize;
    *size = static_cast<int>(bytes);
    return Success;
}

}  // namespace numeric
