#include "host/imaging/PictureViews.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "host/imaging/HkImageAccess.h"
#include "host/imaging/pixels.h"

namespace {

/// The region as OpenCV sees it; no pixel is copied.
cv::Mat regionOf(const HkImage& picture) {
    return cv::Mat(picture.roiHeight, picture.roiWidth, CV_8UC(picture.channels), picture.data,
                   static_cast<std::size_t>(picture.step));
}

std::unique_ptr<HkImage> emptyPicture(int width, int height, int channels) {
    auto picture = std::make_unique<HkImage>();
    if (!HkImageAccess::allocate(*picture, width, height, channels, HkImageAccess::kRowAlignment,
                                 HkImageAccess::Contents::Undefined))
        return nullptr;
    return picture;
}

std::unique_ptr<HkImage> pictureOf(const cv::Mat& pixels) {
    auto picture = emptyPicture(pixels.cols, pixels.rows, pixels.channels());
    if (picture) pixels.copyTo(regionOf(*picture));
    return picture;
}

bool hasAlpha(const cv::Mat& pixels) {
    return pixels.channels() % 2 == 0;
}

cv::Mat channelOf(const cv::Mat& pixels, int channel) {
    cv::Mat samples;
    cv::extractChannel(pixels, samples, channel);
    return samples;
}

/// Grey without alpha, of a grey picture.
cv::Mat greyOf(const cv::Mat& pixels) {
    return hasAlpha(pixels) ? channelOf(pixels, 0) : pixels;
}

/// RGB without alpha.
cv::Mat coloursOf(const cv::Mat& pixels) {
    cv::Mat colours;
    switch (pixels.channels()) {
        case 1:
        case 2:
            cv::cvtColor(greyOf(pixels), colours, cv::COLOR_GRAY2RGB);
            return colours;
        case 4:
            cv::cvtColor(pixels, colours, cv::COLOR_RGBA2RGB);
            return colours;
        default:
            return pixels;
    }
}

bool areAlikeInSize(const HkImage& a, const HkImage& b) {
    return HkImageAccess::isPicture(a) && HkImageAccess::isPicture(b) && a.roiWidth == b.roiWidth &&
           a.roiHeight == b.roiHeight;
}

/// Full-range hues spaced by the golden ratio: areas that are numbered one after the other, as
/// neighbours mostly are, look as different as they can.
std::vector<cv::Vec3b> tints(int count) {
    cv::Mat hues(1, std::max(count, 1), CV_8UC3);
    const double goldenRatio = 0.618034;
    for (int i = 0; i < hues.cols; ++i) {
        const double turns = i * goldenRatio;
        const int hue = static_cast<int>((turns - std::floor(turns)) * 255);
        hues.at<cv::Vec3b>(0, i) = cv::Vec3b(static_cast<unsigned char>(hue), 200, 255);
    }
    cv::cvtColor(hues, hues, cv::COLOR_HSV2RGB_FULL);
    return std::vector<cv::Vec3b>(hues.begin<cv::Vec3b>(), hues.end<cv::Vec3b>());
}

template <typename Make>
std::unique_ptr<HkImage> orNull(const Make& make) {
    try {
        return make();
    } catch (const std::exception&) {  // out of memory; sizes and channels were checked before
        return nullptr;
    }
}

std::array<int, 3> samplesOf(const cv::Mat& pixel) {
    const unsigned char* samples = pixel.ptr();
    return {samples[0], samples[1], samples[2]};
}

}  // namespace

std::unique_ptr<HkImage> copyPicture(const HkImage& picture) {
    if (!HkImageAccess::isPicture(picture)) return nullptr;
    return orNull([&] { return pictureOf(regionOf(picture)); });
}

std::unique_ptr<HkImage> reducedPicture(const HkImage& picture, int factor) {
    if (!HkImageAccess::isPicture(picture) || factor < 1) return nullptr;
    return scaledPicture(picture, std::max(1, picture.roiWidth / factor),
                         std::max(1, picture.roiHeight / factor));
}

std::unique_ptr<HkImage> scaledPicture(const HkImage& picture, int width, int height) {
    if (!HkImageAccess::isPicture(picture) || width < 1 || height < 1 || width > picture.roiWidth ||
        height > picture.roiHeight)
        return nullptr;
    return orNull([&] {
        cv::Mat scaled;
        cv::resize(regionOf(picture), scaled, cv::Size(width, height), 0, 0, cv::INTER_AREA);
        return pictureOf(scaled);
    });
}

std::unique_ptr<HkImage> differencePicture(const HkImage& before, const HkImage& after, int gain) {
    if (!areAlikeInSize(before, after)) return nullptr;
    return orNull([&] {
        const cv::Mat a = regionOf(before), b = regionOf(after);
        const bool isGrey = a.channels() <= 2 && b.channels() <= 2;
        cv::Mat difference;
        cv::absdiff(isGrey ? greyOf(a) : coloursOf(a), isGrey ? greyOf(b) : coloursOf(b),
                    difference);
        if (hasAlpha(a) && hasAlpha(b)) {
            cv::Mat ofAlpha;
            cv::absdiff(channelOf(a, a.channels() - 1), channelOf(b, b.channels() - 1), ofAlpha);
            cv::max(difference, isGrey ? ofAlpha : coloursOf(ofAlpha), difference);
        }
        difference.convertTo(difference, -1, gain);
        return pictureOf(difference);
    });
}

std::unique_ptr<HkImage> withAreasTinted(const HkImage& picture, const HkImage& areas) {
    if (!areAlikeInSize(picture, areas) || areas.channels != 1) return nullptr;
    return orNull([&] {
        cv::Mat labels;
        const int eightNeighbours = 8;
        const int count = cv::connectedComponents(regionOf(areas), labels, eightNeighbours);
        const std::vector<cv::Vec3b> tint = tints(count);
        cv::Mat colours = coloursOf(regionOf(picture)).clone();
        for (int y = 0; y < labels.rows; ++y) {
            const int* label = labels.ptr<int>(y);
            cv::Vec3b* colour = colours.ptr<cv::Vec3b>(y);
            for (int x = 0; x < labels.cols; ++x) {
                if (label[x] == 0) continue;
                const cv::Vec3b& own = tint[static_cast<std::size_t>(label[x])];
                for (int c = 0; c < 3; ++c)
                    colour[x][c] = static_cast<unsigned char>((colour[x][c] + own[c] + 1) / 2);
            }
        }
        return pictureOf(colours);
    });
}

LevelCounts levelCounts(const HkImage& picture) {
    LevelCounts levels;
    if (!HkImageAccess::isPicture(picture)) return levels;
    levels.channels = picture.channels <= 2 ? 1 : 3;
    for (int y = 0; y < picture.roiHeight; ++y) {
        const unsigned char* sample = picture.data + static_cast<std::ptrdiff_t>(y) * picture.step;
        for (int x = 0; x < picture.roiWidth; ++x, sample += picture.channels)
            for (int c = 0; c < levels.channels; ++c) ++levels.counts[c][sample[c]];
    }
    return levels;
}

PixelValue pixelAt(const HkImage& picture, int x, int y) {
    PixelValue value;
    if (!HkImageAccess::isPicture(picture) || x < 0 || y < 0 || x >= picture.roiWidth ||
        y >= picture.roiHeight)
        return value;
    const cv::Mat rgb = coloursOf(regionOf(picture)(cv::Rect(x, y, 1, 1)));
    value.isValid = true;
    value.rgb = samplesOf(rgb);
    value.yuv = samplesOf(pixels::rgbToYuv(rgb));
    value.hls = samplesOf(pixels::rgbToHls(rgb));
    return value;
}
