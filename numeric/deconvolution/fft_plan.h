#pragma once

#include <cstdint>

namespace numeric {

/// One pass of a transform: butterflies of `radix` inputs over transforms of `span` elements.
struct FftLevel {
    int radix;
    int span;
    int reach;   ///< span / radix: the number of butterflies of one transform
    int stride;  ///< between the inputs of a butterfly, in stored elements
    /// reach x (radix - 1) complex factors: output p of butterfly j is turned by -2 pi j p / span.
    const float* twiddles;
};

/// Set-up of complex transforms of a power-of-two length, decimated in frequency: every pass
/// works in place and leaves the frequencies in digit-reversed order, the inverse passes undo
/// them one by one, so that nothing is ever reordered. A first pass of radix 2, 4 or 8 is followed
/// by passes of radix 8 and, on groups of 4 elements, a last one of radix 4 that has no factors.
///
/// Element p of a transform is stored at p + p / 32: a gap after every 32 elements keeps the
/// inputs of a butterfly, a power of two apart otherwise, from competing for the same cache sets.
///
/// Cooley & Tukey 1965; decimation in frequency after Gentleman & Sande 1966.
struct FftPlan {
    static constexpr int kSmallestLength = 128;
    static constexpr int kMaxLevels = 10;
    static constexpr int kLastRadix = 4;

    int length;
    int levelCount;               ///< passes before the last one
    FftLevel levels[kMaxLevels];  ///< the first pass first
    int storedLength;             ///< elements that a transform occupies, gaps included

    /// Group g, elements 4 g to 4 g + 3, ends up with the frequencies groupFrequency[g] +
    /// {0, 1, 2, 3} x length / 4.
    const std::int32_t* groupFrequency;

    /// Two groups that hold frequencies and their negatives; offsets in stored elements.
    /// Quad 0 is the exception: the groups of 0 and length / 8, each its own counterpart.
    struct Quad {
        std::int32_t group;
        std::int32_t counterpart;
        std::int32_t frequency;  ///< groupFrequency of group
    };
    const Quad* quads;  ///< length / 8 of them

    int quadCount() const { return length / 8; }

    static constexpr int stored(int element) { return element + element / 32; }
};

/// A plan for a power-of-two length of at least kSmallestLength, in one block of allocAligned,
/// which the caller returns with freeAligned. Null when there is no memory.
FftPlan* makeFftPlan(int length);

}  // namespace numeric
