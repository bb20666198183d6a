#pragma once

#include "framework/contract/ImageProcessor/ImageProcessorGlobal.h"

/// A picture of 8-bit samples, channels interleaved: 1 grey, 2 grey and alpha, 3 RGB, 4 RGB and
/// alpha.
///
/// The region (roiWidth x roiHeight, starting at the first pixel) is what operations process; width
/// x height is what is allocated. Filters read the members directly, and write none but the
/// region's.
class IMAGEPROCESSOR_EXPORT HkImage {
public:
    /// Empty image: no pixels, every size 0. setImage32f() or an operation's destination fills it.
    HkImage();

    /// New image of width x height pixels, its region the whole image.
    /// pixels null: the image allocates its rows, zeroed, each starting on a multiple of
    /// rowAlignment bytes from the last. pixels given: the image shows the caller's rows, laid out
    /// the same way, and never frees them. A size, channel count (1 to 4) or alignment that cannot
    /// be, or no memory: an empty image.
    HkImage(int width, int height, int channels, unsigned char* pixels, unsigned int rowAlignment);

    /// Frees the pixels the image allocated.
    ~HkImage();

    /// Copies a one-channel region to a float plane, sample 0 ... 255 becoming lo ... hi.
    /// dst: roiHeight rows, each width * 4 bytes raised to a multiple of 32 from the last.
    /// False, and nothing written, when dst is null, the image is empty or it has more than one
    /// channel.
    bool getBufferCopy32f(float* dst, float lo, float hi);

    /// Replaces the image by width x height pixels of `channels` channels, each holding the one
    /// float plane src: lo ... hi becomes 0 ... 255, rounded to nearest and clamped; NaN, and
    /// everything when hi <= lo, becomes 0. src: height rows, each width * 4 bytes raised to a
    /// multiple of 32 from the last. When size and channels are what they were, the pixels are
    /// written where they are and the region stays; otherwise the region is the whole image.
    /// Arguments that cannot be, or no memory: the image is left as it was.
    void setImage32f(int width, int height, int channels, float* src, float lo, float hi);

    unsigned char* data = nullptr;  ///< first byte of the first row
    int step = 0;                   ///< bytes from one row to the next
    int channels = 0;
    int roiWidth = 0;  ///< size of the region to be processed, pixels
    int roiHeight = 0;
    int width = 0;  ///< allocated size, pixels
    int height = 0;

private:
    HkImage(const HkImage&);  // a picture has one owner
    HkImage& operator=(const HkImage&);

    friend struct HkImageAccess;       ///< the imaging library's own door to m_owned
    unsigned char* m_owned = nullptr;  ///< the block to free, null when the caller owns the pixels
};
