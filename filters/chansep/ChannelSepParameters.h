#pragma once

namespace ChannelSepParameters {

enum { TypeId = 2002 };

/// Index order = keyframe order; "Enabled" is 0.
enum Parameter { Channel = 1, Invert };

/// Values of "Channel". Saturation is 6 and lightness 5 on purpose: saved documents carry these
/// numbers.
enum ChannelValue {
    NoChannel = 0,
    Red = 1,
    Green = 2,
    Blue = 3,
    Hue = 4,
    Lightness = 5,
    Saturation = 6
};

}  // namespace ChannelSepParameters
