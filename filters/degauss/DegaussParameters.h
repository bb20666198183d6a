#pragma once

namespace DegaussParameters {

enum { TypeId = 2010 };

/// Index order = keyframe order; "Enabled" is 0.
enum Parameter { Threshold = 1, Method };

/// Values of "Method".
enum MethodValue { FFT = 0, LucyRichardson = 1 };

}  // namespace DegaussParameters
