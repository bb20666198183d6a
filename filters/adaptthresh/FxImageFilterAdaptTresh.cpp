#include "filters/adaptthresh/FxImageFilterAdaptTresh.h"

#include "filters/adaptthresh/AdaptTreshParameters.h"

using namespace AdaptTreshParameters;

FxImageFilterAdaptTresh::FxImageFilterAdaptTresh(int instanceId)
    : FxImageFilter(TypeId, instanceId) {}

HkImage* FxImageFilterAdaptTresh::process(HkImage* image, const ParameterValues& values) {
    // Both values are cut to 8 bits, and "Min" is read as a whole number (12.8 counts as 13):
    // documents made so far rely on it, though the page offers tenths.
    const int size = static_cast<unsigned char>(values.toInt(Size));
    const double min = static_cast<unsigned char>(values.toInt(Min));
    if (image->channels != 1) bestEffort(processor().RGBtoGrayscale(image, nullptr));
    bestEffort(processor().adaptTreshold(image, nullptr, size, min));
    return image;
}
