#include "filters/adaptthresh/FxImageFilterAdaptTresh.h"

#include "filters/adaptthresh/AdaptTreshParameters.h"

FxImageFilterAdaptTresh::FxImageFilterAdaptTresh(int instanceId)
    : FxImageFilter(AdaptTreshTypeId, instanceId) {}

HkImage* FxImageFilterAdaptTresh::process(HkImage* image, const ParameterValues& values) {
    // Both values are cut to 8 bits, and "Min" is read as a whole number (12.8 counts as 13):
    // documents made so far rely on it, though the page offers tenths.
    const int size = static_cast<unsigned char>(values.toInt(SizeParameter));
    const double min = static_cast<unsigned char>(values.toInt(MinParameter));
    if (image->channels != 1) static_cast<void>(processor().RGBtoGrayscale(image, nullptr));
    static_cast<void>(processor().adaptTreshold(image, nullptr, size, min));
    return image;
}
