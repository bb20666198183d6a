#pragma once

enum { DistanceTypeId = 2011 };

/// Index order = keyframe order; "Enabled" is 0.
enum DistanceParameter { TypeParameter = 1, DetParameter };

/// Values of "Type".
enum SeparatorOutput { FilledAreas = 0, BordersOnly = 1 };
