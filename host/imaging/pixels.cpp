#include "host/imaging/pixels.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "host/imaging/channel_rows.h"

namespace pixels {

namespace {

/// Reach up to which trying every sample of a window is faster than growing windows: the two were
/// equal at 50 pixels on a colour picture of 1920 x 1080.
constexpr int kSmallReach = 48;

/// OpenCV blurs 8-bit pictures with weights rounded to 8 bits: two to four times faster than float
/// and hardly different while the weights are few. Wide kernels come out up to 14 levels wrong, and
/// from a side of about 80 on no faster.
constexpr int kFixedPointSide = 31;

/// OpenCV keeps chroma in the order V, U.
cv::Mat swapChroma(const cv::Mat& image) {
    cv::Mat swapped(image.size(), CV_8UC3);
    const int fromTo[] = {0, 0, 2, 1, 1, 2};
    cv::mixChannels(&image, 1, &swapped, 1, fromTo, 3);
    return swapped;
}

enum class Axis { Columns, Rows };

cv::Mat span(const cv::Mat& image, Axis axis, int begin, int end) {
    return axis == Axis::Columns ? image.colRange(begin, end) : image.rowRange(begin, end);
}

/// Extends the window of every pixel by `reach` pixels towards the end of the axis (forward) or its
/// beginning. A pixel whose window reaches w pixels that way takes over the window of the pixel
/// d <= w + 1 further on; where there is no such pixel the window reaches the border already. So
/// the reach doubles with each pass.
void extendWindows(cv::Mat& image, Axis axis, int reach, bool forward, Extreme extreme) {
    const int length = axis == Axis::Columns ? image.cols : image.rows;
    cv::Mat next(image.size(), image.type());
    for (int reached = 0; reached < reach;) {
        const int shift = std::min(reached + 1, reach - reached);
        const int kept = length - shift;  // pixels that have a partner
        const int from = forward ? 0 : shift;
        cv::Mat target = span(next, axis, from, from + kept);
        const cv::Mat low = span(image, axis, 0, kept);
        const cv::Mat high = span(image, axis, shift, length);
        if (extreme == Extreme::Largest)
            cv::max(low, high, target);
        else
            cv::min(low, high, target);
        const int rest = forward ? kept : 0;
        span(image, axis, rest, rest + shift).copyTo(span(next, axis, rest, rest + shift));
        cv::swap(image, next);
        reached += shift;
    }
}

}  // namespace

cv::Mat withAlphaOf(const cv::Mat& source, const cv::Mat& colours) {
    if (source.channels() != 4) return colours;
    cv::Mat result(source.size(), source.type());
    const cv::Mat inputs[] = {colours, source};
    const int alpha = colours.channels() + 3;
    const int fromTo[] = {0, 0, 1, 1, 2, 2, alpha, 3};
    cv::mixChannels(inputs, 2, &result, 1, fromTo, 4);
    return result;
}

cv::Mat rgbToYuv(const cv::Mat& rgb) {
    // Not COLOR_RGB2YUV, whose U and V are scaled for analogue video. YCrCb is BT.601 full range:
    // U = 128 + (B - Y) * 0.5 / 0.886, V = 128 + (R - Y) * 0.5 / 0.701, each within 0.9 of a level
    // of the exact value over all 2^24 colours; there and back changes no sample by more than 1.
    cv::Mat yvu;
    cv::cvtColor(rgb, yvu, cv::COLOR_RGB2YCrCb);
    return swapChroma(yvu);
}

cv::Mat yuvToRgb(const cv::Mat& yuv) {
    cv::Mat rgb;
    cv::cvtColor(swapChroma(yuv), rgb, cv::COLOR_YCrCb2RGB);
    return rgb;
}

cv::Mat rgbToHls(const cv::Mat& rgb) {
    cv::Mat hls;
    cv::cvtColor(rgb, hls, cv::COLOR_RGB2HLS_FULL);
    return hls;
}

void luma(const cv::Mat& rgb, cv::Mat& grey) {
    // Not COLOR_RGB2GRAY, which rounds some colours differently from the Y of YCrCb.
    grey.create(rgb.size(), CV_8UC1);
    for (int y = 0; y < rgb.rows; ++y)
        channel_rows::luma(rgb.ptr(y), rgb.channels(), grey.ptr(y), rgb.cols);
}

void copyChannel(const cv::Mat& image, int from, cv::Mat& result, int to) {
    for (int y = 0; y < image.rows; ++y)
        channel_rows::copyChannel(image.ptr(y) + from, image.channels(), result.ptr(y) + to,
                                  result.channels(), image.cols);
}

cv::Mat gaussian(const cv::Mat& image, int side) {
    const cv::Size window(side, side);
    cv::Mat blurred;
    if (side <= kFixedPointSide) {
        cv::GaussianBlur(image, blurred, window, 0, 0, cv::BORDER_REPLICATE);
        return blurred;
    }
    image.convertTo(blurred, CV_32F);
    cv::GaussianBlur(blurred, blurred, window, 0, 0, cv::BORDER_REPLICATE);
    cv::Mat result;
    blurred.convertTo(result, CV_8U);
    return result;
}

void extremeOfWindow(const cv::Mat& image, cv::Mat& result, int before, int after,
                     Extreme extreme) {
    const int left = std::min(before, image.cols - 1);
    const int right = std::min(after, image.cols - 1);
    const int above = std::min(before, image.rows - 1);
    const int below = std::min(after, image.rows - 1);
    if (std::max({left, right, above, below}) <= kSmallReach) {
        const cv::Size window(left + right + 1, above + below + 1);
        const cv::Mat rectangle = cv::getStructuringElement(cv::MORPH_RECT, window);
        const int operation = extreme == Extreme::Largest ? cv::MORPH_DILATE : cv::MORPH_ERODE;
        cv::morphologyEx(image, result, operation, rectangle, cv::Point(left, above), 1,
                         cv::BORDER_REPLICATE);
        return;
    }
    cv::Mat extended = image.clone();
    extendWindows(extended, Axis::Columns, left, false, extreme);
    extendWindows(extended, Axis::Columns, right, true, extreme);
    extendWindows(extended, Axis::Rows, above, false, extreme);
    extendWindows(extended, Axis::Rows, below, true, extreme);
    extended.copyTo(result);
}

}  // namespace pixels
