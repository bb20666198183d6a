#pragma once

#include "framework/contract/ImageProcessor/HkImage.h"

class QString;

/// The host's imaging operations.
///
/// Every operation returns 0 on success. It works on the region of src; a null dst means in place.
/// An empty dst is allocated to fit; any other dst must have the region size and channel count of
/// the result. A null or empty image, a channel count or size the operation cannot do, a dst that
/// does not fit, or no memory: non-zero, and nothing changed. Nothing throws. A fourth channel
/// passes through every operation untouched. Neighbourhoods replicate the border. Colour is RGB.
/// Operations may run on several threads at once on different images.
class IMAGEPROCESSOR_EXPORT HkImageProcessor {
public:
    /// The one processor. messageCallback, when given, is called with a sentence for every
    /// operation that fails, until another non-null callback takes its place.
    static HkImageProcessor* getInstance(void (*messageCallback)(const QString&));

    /// Copies one channel (0-based) of src's region over one channel of dst, which must have pixels
    /// and the same region.
    int copyChannel(HkImage* src, int srcChannel, HkImage* dst, int dstChannel);

    int RGBtoYUV(HkImage* src,
                 HkImage* dst);  ///< Y, U, V of BT.601, full range, U and V centred on 128
    int YUVtoRGB(HkImage* src, HkImage* dst);  ///< the inverse of RGBtoYUV
    int RGBtoHLS(HkImage* src, HkImage* dst);  ///< H, L, S, each 0 ... 255

    /// Luma (the Y of RGBtoYUV). In place the image becomes a one-channel image.
    int RGBtoGrayscale(HkImage* src, HkImage* dst);

    int invert(HkImage* src, HkImage* dst);  ///< 255 - sample

    int blur(HkImage* src, unsigned int size, HkImage* dst);  ///< Gaussian of side 2 * size - 1
    int maxFilter(HkImage* src, unsigned int size, HkImage* dst);  ///< largest of size x size
    int open(HkImage* src, unsigned int size,
             HkImage* dst);  ///< size erosions, then size dilations by 3 x 3
    int close(HkImage* src, unsigned int size,
              HkImage* dst);  ///< size dilations, then size erosions by 3 x 3

    /// |amount| passes of 3 x 3: amount < 0 dilates, amount > 0 erodes, 0 copies.
    int dilate_erode(HkImage* src, int amount, HkImage* dst);

    /// One-channel images: 255 where the pixel exceeds the mean of its size x size neighbourhood by
    /// more than -min, 0 elsewhere. size is made odd (upwards) and at least 3.
    int adaptTreshold(HkImage* src, HkImage* dst, int size, double min);

private:
    HkImageProcessor();
    ~HkImageProcessor();
    HkImageProcessor(const HkImageProcessor&);
    HkImageProcessor& operator=(const HkImageProcessor&);
};
