#pragma once

#include <opencv2/core.hpp>

/// The pixel work itself, on 8-bit matrices. Functions that return a matrix make a new one; the
/// others write to their second matrix.
namespace pixels {

/// The first three channels of colours, and the fourth of source where source has one.
cv::Mat withAlphaOf(const cv::Mat& source, const cv::Mat& colours);

/// Conversions of three or four channels to three.
cv::Mat rgbToYuv(const cv::Mat& rgb);
cv::Mat yuvToRgb(const cv::Mat& yuv);
cv::Mat rgbToHls(const cv::Mat& rgb);

/// One channel, made to fit: the same numbers as the first channel of rgbToYuv(). The rows of grey
/// may begin where those of rgb do.
void luma(const cv::Mat& rgb, cv::Mat& grey);

/// Channel `from` of the image replaces channel `to` of result, a matrix of the same size that
/// shares no pixels with the image or is the image itself.
void copyChannel(const cv::Mat& image, int from, cv::Mat& result, int to);

/// Gaussian of side x side pixels, side odd, its sigma the one OpenCV takes for that side. Within 3
/// levels of the exact value up to a side of 31, within 1 beyond.
cv::Mat gaussian(const cv::Mat& image, int side);

enum class Extreme { Largest, Smallest };

/// Largest or smallest sample among the pixels from `before` to the left of (above) a pixel to
/// `after` to the right of (below) it. Replicating the border adds no sample that is not among
/// those already, so windows are cut at the border and any reach is allowed.
/// result, made to fit, may be the image itself; all memory is taken before it is written.
void extremeOfWindow(const cv::Mat& image, cv::Mat& result, int before, int after, Extreme extreme);

}  // namespace pixels
