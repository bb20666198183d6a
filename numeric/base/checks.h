#pragma once

#include <cstdint>
#include <initializer_list>

#include "numeric/numeric.h"

/// The argument checks that kernels share; each reports its own errors in the documented order.
namespace numeric {

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

/// The result of the first check that fails: firstError(checkSize(...), checkByteSteps(...)).
inline KernelStatus firstError(KernelStatus first, KernelStatus second) {
    return first != Success ? first : second;
}

}  // namespace numeric
