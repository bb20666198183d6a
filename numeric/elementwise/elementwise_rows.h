#pragma once

#include "numeric/base/dispatch.h"

namespace numeric {

/// The levels and values of thresholdBothSides, within the range of a pixel.
struct ByteThresholds {
    unsigned char lowerLevel, lowerValue, upperLevel, upperValue;
};

/// Inner loops of the element-wise operations, each over one row of width pixels.
struct ElementwiseRows {
    void (*thresholdFloat)(float* data, int width, float level, float value);
    void (*subtractScalar)(const float* src, float scalar, float* dst, int width);
    /// The same past the caches.
    void (*subtractScalarStreamed)(const float* src, float scalar, float* dst, int width);
    void (*subtract)(const float* src, float* srcDst, int width);
    /// The largest of start and the row's pixels; NaN pixels are passed over. start is no NaN.
    float (*maximum)(const float* data, int width, float start);
    void (*bitwiseOr)(const unsigned char* src, unsigned char* srcDst, int width);
    void (*thresholdBytes)(unsigned char* data, int width, ByteThresholds thresholds);
};

extern const RowBuilds<ElementwiseRows> kElementwiseBuilds;

extern const SlotTable<ElementwiseRows> kThresholdFloatSlots;
extern const SlotTable<ElementwiseRows> kSubtractScalarSlots;
extern const SlotTable<ElementwiseRows> kSubtractSlots;
extern const SlotTable<ElementwiseRows> kMaximumSlots;
extern const SlotTable<ElementwiseRows> kBitwiseOrSlots;
extern const SlotTable<ElementwiseRows> kByteThresholdsSlots;

}  // namespace numeric
