#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"

/// How many areas of pixels that are not black the region of a one-channel image holds; pixels that
/// touch by a corner belong together. -1 for an image of another kind, or when memory ran out.
IMAGEPROCESSOR_EXPORT int countWhiteAreas(const HkImage& image);

/// White pixels that touch by a side or a corner. Places are in pixels; the middle of the first
/// pixel of the region is 0, 0.
struct Area {
    int pixels = 0;
    double centroidX = 0;
    double centroidY = 0;
    int left = 0;  ///< of the smallest upright rectangle around it
    int top = 0;
    int width = 0;
    int height = 0;
};

/// Which areas are kept.
struct AreaRules {
    int fewestPixels = 1;
    bool withoutBorder = false;  ///< none of those that reach the border of the region
};

/// The areas of a region of width x height pixels, in the order of their first pixels, row by row.
struct AreaMap {
    int width = 0;
    int height = 0;
    std::vector<Area> areas;
    std::vector<std::int32_t> labels;  ///< row by row: k for a pixel of areas[k - 1], 0 for others
    int leftOut = 0;                   ///< how many areas the rules did not keep
};

enum class AreaStatus { Success, NotOneChannel, NotBlackAndWhite, NoMemory };

/// Finds and measures the white areas of a region that is black and white only; errors are looked
/// for in the order of AreaStatus. The labels take 4 bytes a pixel.
IMAGEPROCESSOR_EXPORT AreaStatus mapAreas(const HkImage& image, const AreaRules& rules,
                                          AreaMap& map);

/// The region of the picture in colours, with the outline of each area: those of its pixels that
/// have a side in common with another pixel or with the border, in orange. Alpha stays, except that
/// outlines are opaque. Null when the map is of another size, the image is no picture, or memory
/// ran out.
IMAGEPROCESSOR_EXPORT std::unique_ptr<HkImage> withOutlines(const HkImage& picture,
                                                            const AreaMap& map);
