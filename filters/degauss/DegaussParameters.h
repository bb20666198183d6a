#pragma once

enum { DegaussTypeId = 2010 };

/// Index order = keyframe order; "Enabled" is 0.
enum DegaussParameter { ThresholdParameter = 1, MethodParameter };

/// Values of "Method".
enum DeconvolutionMethod { FFTMethod = 0, LucyRichardsonMethod = 1 };
