#include "filters/chansep/FxImageFilterSep.h"

#include "filters/chansep/ChannelSepParameters.h"

FxImageFilterSep::FxImageFilterSep(int instanceId) : FxImageFilter(ChannelSepTypeId, instanceId) {}

HkImage* FxImageFilterSep::process(HkImage* image, const ParameterValues& values) {
    const bool inverted = values.toBool(InvertParameter);
    if (image->channels == 1) {
        if (inverted) static_cast<void>(processor().invert(image, nullptr));
        return image;
    }

    // The frame is converted in place: should the copy fail, it is returned in the colour space it
    // has by then.
    int sourceChannel = 0;
    switch (values.toInt(ChannelParameter)) {
        case RedChannel:
            sourceChannel = 0;
            break;
        case GreenChannel:
            sourceChannel = 1;
            break;
        case BlueChannel:
            sourceChannel = 2;
            break;
        case HueChannel:
            static_cast<void>(processor().RGBtoHLS(image, nullptr));
            sourceChannel = 0;
            break;
        case SaturationChannel:
            static_cast<void>(processor().RGBtoHLS(image, nullptr));
            sourceChannel = 2;
            break;
        case LightnessChannel:
            // Luma on purpose, not the lightness of HLS: it weighs the colours as the eye does.
            static_cast<void>(processor().RGBtoYUV(image, nullptr));
            sourceChannel = 0;
            break;
        default:
            return image;
    }

    OwnedImage result = makeImage(*image, 1);
    if (processor().copyChannel(image, sourceChannel, result.get(), 0) != 0) return image;
    if (inverted) static_cast<void>(processor().invert(result.get(), nullptr));
    const OwnedImage consumed(image);  // the frame we were given gives way to the new one ...
    return result.release();           // ... which is the caller's
}
