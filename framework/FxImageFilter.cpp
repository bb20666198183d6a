#include "framework/FxImageFilter.h"

#include <new>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"

HkImage* FxImageFilter::processImage(HkImage* image, __int64 frame) {
    if (!image) return nullptr;
    const HkKernelObjectData* object =
        HkFXKernelData::getInstance()->getObject(filterTypeId(), objectId);
    if (!object) return image;
    const ParameterValues values(object->getKeyframesAt(frame));
    if (!values.toBool(EnabledParameter)) return image;
    return process(image, values);
}

OwnedImage FxImageFilter::makeImage(const HkImage& image, int channels) {
    const unsigned int rowAlignment = 4;
    OwnedImage made(new (std::nothrow)
                        HkImage(image.width, image.height, channels, nullptr, rowAlignment));
    if (!made || !made->data) return nullptr;
    made->roiWidth = image.roiWidth;
    made->roiHeight = image.roiHeight;
    return made;
}
