#include "filters/chansep/FxImageFilterSep.h"

#include "filters/chansep/ChannelSepParameters.h"

using namespace ChannelSepParameters;

FxImageFilterSep::FxImageFilterSep(int instanceId) : FxImageFilter(TypeId, instanceId) {}

HkImage* FxImageFilterSep::process(HkImage* image, const ParameterValues& values) {
    const bool inverted = values.toBool(Invert);
    if (image->channels == 1) {
        if (inverted) bestEffort(processor().invert(image, nullptr));
        return image;
    }

    // The frame is converted in place: should the copy fail, it is returned in the colour space it
    // has by then.
    int sourceChannel = 0;
    switch (values.toInt(Channel)) {
        case Red:
            sourceChannel = 0;
            break;
        case Green:
            sourceChannel = 1;
            break;
        case Blue:
            sourceChannel = 2;
            break;
        case Hue:
            bestEffort(processor().RGBtoHLS(image, nullptr));
            sourceChannel = 0;
            break;
        case Saturation:
            bestEffort(processor().RGBtoHLS(image, nullptr));
            sourceChannel = 2;
            break;
        case Lightness:
            // Luma on purpose, not the lightness of HLS: it weighs the colours as the eye does.
            bestEffort(processor().RGBtoYUV(image, nullptr));
            sourceChannel = 0;
            break;
        default:
            return image;
    }

    return replaceImage(image, 1, [=](HkImage& result) {
        if (processor().copyChannel(image, sourceChannel, &result, 0) != 0) return false;
        if (inverted) bestEffort(processor().invert(&result, nullptr));
        return true;
    });
}
