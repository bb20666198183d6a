#pragma once

#include "framework/contract/ImageProcessor/HkImage.h"

/// How many areas of pixels that are not black the region of a one-channel image holds; pixels that
/// touch by a corner belong together. -1 for an image of another kind, or when memory ran out.
IMAGEPROCESSOR_EXPORT int countWhiteAreas(const HkImage& image);
