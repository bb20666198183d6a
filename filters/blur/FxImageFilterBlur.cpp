#include "filters/blur/FxImageFilterBlur.h"

#include "filters/blur/BlurParameters.h"

using namespace BlurParameters;

FxImageFilterBlur::FxImageFilterBlur(int instanceId) : FxImageFilter(TypeId, instanceId) {}

HkImage* FxImageFilterBlur::process(HkImage* image, const ParameterValues& values) {
    const unsigned int enhanceSize = 3;
    const int blurSize = values.toInt(Blur);
    // Best effort: an unblurred frame beats no frame.
    if (values.toBool(Enhance)) bestEffort(processor().maxFilter(image, enhanceSize, nullptr));
    if (blurSize > 1)  // 1 means no blur; less can only come from stored data
        bestEffort(processor().blur(image, static_cast<unsigned int>(blurSize), nullptr));
    return image;
}
