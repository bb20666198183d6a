#pragma once

#include <cstddef>
#include <cstring>
#include <memory>

#include "numeric/numeric.h"

namespace numeric {

// Owners of what the kernels' callers keep from call to call.

template <auto Free>
struct FreeWith {
    template <class T>
    void operator()(T* resource) const {
        static_cast<void>(Free(resource));
    }
};

inline void freeBytes(unsigned char* block) {
    freeAligned(block);
}

using OwnedPlane = std::unique_ptr<float, FreeWith<freeFloatImage>>;
using OwnedScratch = std::unique_ptr<unsigned char, FreeWith<freeBytes>>;
using OwnedDeconvFFT = std::unique_ptr<DeconvFFTState, FreeWith<deconvFFTFree>>;
using OwnedDeconvLR = std::unique_ptr<DeconvLRState, FreeWith<deconvLRFree>>;

/// allocFloatImage with every pixel 0; null and *step 0 when that gives none.
inline OwnedPlane makeZeroPlane(int width, int height, int* step) {
    OwnedPlane plane(allocFloatImage(width, height, step));
    if (plane)
        std::memset(plane.get(), 0,
                    static_cast<std::size_t>(*step) * static_cast<std::size_t>(height));
    return plane;
}

inline OwnedScratch makeScratch(int byteCount) {
    return OwnedScratch(static_cast<unsigned char*>(allocAligned(byteCount)));
}

}  // namespace numeric
