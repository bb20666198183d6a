#include "filters/blur/FxImageFilterBlur.h"

#include "filters/blur/BlurParameters.h"

FxImageFilterBlur::FxImageFilterBlur(int instanceId) : FxImageFilter(BlurTypeId, instanceId) {}

HkImage* FxImageFilterBlur::process(HkImage* image, const ParameterValues& values) {
    const unsigned int enhanceSize = 3;
    const int blurSize = values.toInt(BlurSizeParameter);
    // Best effort: an unblurred frame beats no frame.
    if (values.toBool(EnhanceParameter))
        static_cast<void>(processor().maxFilter(image, enhanceSize, nullptr));
    if (blurSize > 1)  // 1 means no blur; less can only come from stored data
        static_cast<void>(processor().blur(image, static_cast<unsigned int>(blurSize), nullptr));
    return image;
}
