#pragma once

enum { AdaptTreshTypeId = 2005 };

/// Index order = keyframe order; "Enabled" is 0.
enum AdaptTreshParameter { SizeParameter = 1, MinParameter };
