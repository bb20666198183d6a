#include "filters/dilate/FxImageFilterDilate.h"

#include "filters/dilate/DilateParameters.h"

FxImageFilterDilate::FxImageFilterDilate(int instanceId)
    : FxImageFilter(DilateParameters::TypeId, instanceId) {}

HkImage* FxImageFilterDilate::process(HkImage* image, const ParameterValues& values) {
    // The host chooses the operation by the sign: it goes there untouched.
    const int amount = values.toInt(SignedMorphologyParameters::Amount);
    if (amount != 0) bestEffort(processor().dilate_erode(image, amount, nullptr));
    return image;
}
