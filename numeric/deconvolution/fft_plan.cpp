#include "numeric/deconvolution/fft_plan.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "numeric/base/alloc.h"

namespace numeric {
namespace {

int log2OfPower(int power) {
    int exponent = 0;
    while (power > 1 << exponent) ++exponent;
    return exponent;
}

/// Radix of the first pass, so that passes of radix 8 and a last one of radix 4 do the rest.
int firstRadix(int length) {
    const int exponent = log2OfPower(length / FftPlan::kLastRadix);
    return 1 << ((exponent - 1) % 3 + 1);
}

void fillTwiddles(const FftLevel& level, float* twiddles) {
    const double step = -2.0 * 3.14159265358979323846 / level.span;
    for (int j = 0; j < level.reach; ++j) {
        for (int p = 1; p < level.radix; ++p) {
            const double angle = step * j * p;
            *twiddles++ = static_cast<float>(std::cos(angle));
            *twiddles++ = static_cast<float>(std::sin(angle));
        }
    }
}

/// The frequency that digit reversal leaves at the first element of a group.
int frequencyOfGroup(const FftPlan& plan, int group) {
    int position = group * FftPlan::kLastRadix;
    int frequency = 0;
    int weight = 1;
    for (int i = 0; i < plan.levelCount; ++i) {
        const FftLevel& level = plan.levels[i];
        frequency += weight * (position / level.reach);
        position %= level.reach;
        weight *= level.radix;
    }
    return frequency;
}

void fillQuads(const FftPlan& plan, std::int32_t* frequencies, FftPlan::Quad* quads) {
    const int groups = plan.length / FftPlan::kLastRadix;
    const int half = groups / 2;
    for (int group = 0; group < groups; ++group) {
        const int frequency = frequencyOfGroup(plan, group);
        frequencies[group] = frequency;
        const int offset = FftPlan::stored(group * FftPlan::kLastRadix);
        if (frequency < half) quads[frequency].group = offset;
        if (frequency == half) quads[0].counterpart = offset;
        if (frequency > half) quads[groups - frequency].counterpart = offset;
    }
    for (int frequency = 0; frequency < half; ++frequency) quads[frequency].frequency = frequency;
    // In the order of their groups, so that most of the memory is visited in sequence.
    std::sort(quads + 1, quads + half,
              [](const FftPlan::Quad& a, const FftPlan::Quad& b) { return a.group < b.group; });
}

}  // namespace

FftPlan* makeFftPlan(int length) {
    std::int64_t twiddleFloats = 0;
    FftPlan plan{};
    plan.length = length;
    plan.storedLength = FftPlan::stored(length);
    int radix = firstRadix(length);
    for (int span = length; span > FftPlan::kLastRadix;) {
        FftLevel& level = plan.levels[plan.levelCount++];
        level.radix = radix;
        level.span = span;
        level.reach = span / radix;
        level.stride = FftPlan::stored(level.reach);
        twiddleFloats += std::int64_t{2} * level.reach * (radix - 1);
        span /= radix;
        radix = 8;
    }

    const int groups = length / FftPlan::kLastRadix;
    const std::int64_t bytes = static_cast<std::int64_t>(sizeof(FftPlan)) + twiddleFloats * 4 +
                               std::int64_t{4} * groups +
                               static_cast<std::int64_t>(sizeof(FftPlan::Quad)) * plan.quadCount();
    void* block = allocArray<unsigned char>(bytes);
    if (!block) return nullptr;

    auto* result = new (block) FftPlan(plan);
    auto* twiddles = reinterpret_cast<float*>(result + 1);
    for (int i = 0; i < result->levelCount; ++i) {
        FftLevel& level = result->levels[i];
        level.twiddles = twiddles;
        fillTwiddles(level, twiddles);
        twiddles += std::int64_t{2} * level.reach * (level.radix - 1);
    }
    auto* frequencies = reinterpret_cast<std::int32_t*>(twiddles);
    auto* quads = reinterpret_cast<FftPlan::Quad*>(frequencies + groups);
    fillQuads(*result, frequencies, quads);
    result->groupFrequency = frequencies;
    result->quads = quads;
    return result;
}

}  // namespace numeric
