#pragma once

namespace AdaptTreshParameters {

enum { TypeId = 2005 };

/// Index order = keyframe order; "Enabled" is 0.
enum Parameter { Size = 1, Min };

}  // namespace AdaptTreshParameters
