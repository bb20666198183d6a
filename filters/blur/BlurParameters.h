#pragma once

enum { BlurTypeId = 2003 };

/// Index order = keyframe order; "Enabled" is 0.
enum BlurParameter { EnhanceParameter = 1, BlurSizeParameter };
