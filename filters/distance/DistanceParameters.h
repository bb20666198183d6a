#pragma once

namespace DistanceParameters {

enum { TypeId = 2011 };

/// Index order = keyframe order; "Enabled" is 0.
enum Parameter { Type = 1, Det };

/// Values of "Type".
enum TypeValue { FilledAreas = 0, BordersOnly = 1 };

}  // namespace DistanceParameters
