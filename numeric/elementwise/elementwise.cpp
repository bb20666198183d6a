#include <algorithm>
#include <cstdint>
#include <limits>

#include "numeric/base/checks.h"
#include "numeric/base/views.h"
#include "numeric/elementwise/elementwise_rows.h"

// One pass over the pixels each: checks here, the loop over a row in elementwise_rows.cpp.
namespace numeric {

const SlotTable<ElementwiseRows> kThresholdFloatSlots(kElementwiseBuilds);
const SlotTable<ElementwiseRows> kSubtractScalarSlots(kElementwiseBuilds, {0, 1, 2, 3, 4, 4});
const SlotTable<ElementwiseRows> kSubtractSlots(kElementwiseBuilds, {0, 1, 1, 3, 4, 4});
const SlotTable<ElementwiseRows> kMaximumSlots(kElementwiseBuilds);
const SlotTable<ElementwiseRows> kBitwiseOrSlots(kElementwiseBuilds);
const SlotTable<ElementwiseRows> kByteThresholdsSlots(kElementwiseBuilds);

namespace {

constexpr int kLargestByte = 255;

/// A plane larger than this is out of the caches before anyone reads it. Written past them, it need
/// not be read in first: 1.6 times as fast at 33 MB, slower at 8 MB.
constexpr std::int64_t kStreamedBytes = 16 << 20;

unsigned char toByte(int value) {
    return static_cast<unsigned char>(std::clamp(value, 0, kLargestByte));
}

/// The same thresholds with levels a byte can hold. Only two cases are no mere clamping: every
/// pixel lies below a lower level above 255, and above an upper level below 0.
ByteThresholds toByteThresholds(int lowerLevel, int lowerValue, int upperLevel, int upperValue) {
    const unsigned char lower = toByte(lowerValue);
    const unsigned char upper = toByte(upperValue);
    if (lowerLevel > kLargestByte) return {kLargestByte, lower, kLargestByte - 1, lower};
    if (upperLevel < 0 && lowerLevel < 1) return {1, upper, 0, upper};
    if (upperLevel < 0) return {toByte(lowerLevel), lower, toByte(lowerLevel - 1), upper};
    return {toByte(lowerLevel), lower, toByte(upperLevel), upper};
}

}  // namespace

KernelStatus thresholdFloat(float* data, int step, int width, int height, float level,
                            float value) {
    const KernelStatus status = firstError(
        {checkPointers({data}), checkSize(width, height), checkFloatSteps(width, {step})});
    if (status != Success) return status;

    const PlaneView<float> plane{data, step, width, height};
    const auto thresholdRow = kThresholdFloatSlots.selected().thresholdFloat;
    for (int y = 0; y < height; ++y) thresholdRow(plane.row(y), width, level, value);
    return Success;
}

KernelStatus subtractScalar(const float* src, int srcStep, float scalar, float* dst, int dstStep,
                            int width, int height) {
    const KernelStatus status = firstError({checkPointers({src, dst}), checkSize(width, height),
                                            checkFloatSteps(width, {srcStep, dstStep})});
    if (status != Success) return status;

    const PlaneView<const float> in{src, srcStep, width, height};
    const PlaneView<float> out{dst, dstStep, width, height};
    const ElementwiseRows& rows = kSubtractScalarSlots.selected();
    const bool isStreamed =
        src != dst && std::int64_t{width} * height * int{sizeof(float)} > kStreamedBytes;
    const auto subtractRow = isStreamed ? rows.subtractScalarStreamed : rows.subtractScalar;
    for (int y = 0; y < height; ++y) subtractRow(in.row(y), scalar, out.row(y), width);
    return Success;
}

KernelStatus subtract(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                      int height) {
    const KernelStatus status = firstError({checkPointers({src, srcDst}), checkSize(width, height),
                                            checkFloatSteps(width, {srcStep, srcDstStep})});
    if (status != Success) return status;

    const PlaneView<const float> in{src, srcStep, width, height};
    const PlaneView<float> inOut{srcDst, srcDstStep, width, height};
    const auto subtractRow = kSubtractSlots.selected().subtract;
    for (int y = 0; y < height; ++y) subtractRow(in.row(y), inOut.row(y), width);
    return Success;
}

KernelStatus maximum(const float* data, int step, int width, int height, float* max) {
    const KernelStatus status = firstError(
        {checkPointers({data, max}), checkSize(width, height), checkFloatSteps(width, {step})});
    if (status != Success) return status;

    const PlaneView<const float> plane{data, step, width, height};
    const auto maximumRow = kMaximumSlots.selected().maximum;
    float largest = -std::numeric_limits<float>::infinity();
    for (int y = 0; y < height; ++y) largest = maximumRow(plane.row(y), width, largest);
    // Which of +0 and -0 comes first depends on the vector width; the sum is +0 for both.
    *max = largest + 0.0F;
    return Success;
}

KernelStatus bitwiseOr(const unsigned char* src, int srcStep, unsigned char* srcDst, int srcDstStep,
                       int width, int height) {
    const KernelStatus status = firstError({checkPointers({src, srcDst}), checkSize(width, height),
                                            checkByteSteps(width, {srcStep, srcDstStep})});
    if (status != Success) return status;

    const PlaneView<const unsigned char> in{src, srcStep, width, height};
    const PlaneView<unsigned char> inOut{srcDst, srcDstStep, width, height};
    const auto orRow = kBitwiseOrSlots.selected().bitwiseOr;
    for (int y = 0; y < height; ++y) orRow(in.row(y), inOut.row(y), width);
    return Success;
}

KernelStatus thresholdBothSides(unsigned char* data, int step, int width, int height,
                                int lowerLevel, int lowerValue, int upperLevel, int upperValue) {
    const KernelStatus status = firstError(
        {checkPointers({data}), checkSize(width, height), checkByteSteps(width, {step})});
    if (status != Success) return status;

    const PlaneView<unsigned char> plane{data, step, width, height};
    const ByteThresholds t = toByteThresholds(lowerLevel, lowerValue, upperLevel, upperValue);
    const auto thresholdRow = kByteThresholdsSlots.selected().thresholdBytes;
    for (int y = 0; y < height; ++y) thresholdRow(plane.row(y), width, t);
    return Success;
}

KernelStatus thresholdAbove(unsigned char* data, int step, int width, int height, int level,
                            int value) {
    return thresholdBothSides(data, step, width, height, 0, 0, level, value);
}

KernelStatus thresholdBelow(unsigned char* data, int step, int width, int height, int level,
                            int value) {
    return thresholdBothSides(data, step, width, height, level, value, kLargestByte, 0);
}

}  // namespace numeric
