#pragma once

namespace BlurParameters {

enum { TypeId = 2003 };

/// Index order = keyframe order; "Enabled" is 0.
enum Parameter { Enhance = 1, Blur };

}  // namespace BlurParameters
