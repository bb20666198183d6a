#pragma once

enum { ChannelSepTypeId = 2002 };

/// Index order = keyframe order; "Enabled" is 0.
enum ChannelSepParameter { ChannelParameter = 1, InvertParameter };

/// Values of "Channel". Saturation is 6 and lightness 5 on purpose: saved documents carry these
/// numbers.
enum Channel {
    NoChannel = 0,
    RedChannel = 1,
    GreenChannel = 2,
    BlueChannel = 3,
    HueChannel = 4,
    LightnessChannel = 5,
    SaturationChannel = 6
};
