#include "framework/contract/ImageProcessor/HkImageProcessor.h"

#include <QString>
#include <atomic>
#include <climits>
#include <cmath>
#include <functional>
#include <new>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "host/imaging/HkImageAccess.h"
#include "host/imaging/pixels.h"

namespace {

using MessageCallback = void (*)(const QString&);

enum Result : int { Success = 0, BadArgument = 1, NoMemory = 2, Failed = 3 };

/// No picture the host reads has a longer side, so more reach changes nothing.
constexpr unsigned int kLargestWindow = 32768;
/// The Gaussian costs time and memory in proportion; its side is 2047 here.
constexpr unsigned int kLargestBlur = 1024;
/// The largest odd side whose sum of samples, 255 each, fits an int.
constexpr int kLargestNeighbourhood = 2901;

std::atomic<MessageCallback> messageReceiver{nullptr};

/// Frames are rendered side by side, one thread each, so threads inside an operation would only
/// compete with them. OpenCV knows this setting for the whole process only; it is made while the
/// library is loaded, before any thread can be at work in OpenCV on the library's behalf.
[[maybe_unused]] const bool openCvThreadsOff = [] {
    cv::setNumThreads(0);
    return true;
}();

/// An argument the operation cannot work with; the text completes "<operation>: ".
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

void require(bool condition, const char* reason) {
    if (!condition) throw Refusal(reason);
}

void requireWindow(unsigned int size, unsigned int largest) {
    if (size < 1 || size > largest)
        throw Refusal("the size " + std::to_string(size) + " is not between 1 and " +
                      std::to_string(largest));
}

/// Runs an operation; whatever it throws becomes a result and a sentence. Operations write to the
/// destination only when nothing can fail any more.
template <typename Operation>
int guarded(const char* name, Operation operation) noexcept {
    Result result = Failed;
    const auto report = [name](const char* reason) {
        if (const MessageCallback receive = messageReceiver.load())
            receive(QString::fromUtf8("%1: %2.").arg(QLatin1String(name), QLatin1String(reason)));
    };
    try {
        try {
            operation();
            return Success;
        } catch (const Refusal& refusal) {
            result = BadArgument;
            report(refusal.what());
        } catch (const std::bad_alloc&) {
            result = NoMemory;
            report("there is not enough memory");
        } catch (const cv::Exception& error) {
            result = error.code == cv::Error::StsNoMem ? NoMemory : Failed;
            report(error.code == cv::Error::StsNoMem ? "there is not enough memory"
                                                     : error.err.c_str());
        } catch (const std::exception& error) {
            report(error.what());
        }
    } catch (...) {  // from the receiver, or from writing the sentence
    }
    return result;
}

cv::Mat pixelsOf(const HkImage& image, int width, int height) {
    return cv::Mat(height, width, CV_8UC(image.channels), image.data,
                   static_cast<std::size_t>(image.step));
}

cv::Mat region(const HkImage& image) {
    return pixelsOf(image, image.roiWidth, image.roiHeight);
}

const HkImage& requirePicture(const HkImage* image) {
    require(image, "the source image is null");
    require(HkImageAccess::isPicture(*image), "the source image has no valid pixels");
    return *image;
}

void requireChannels(const HkImage& image, int least, int most) {
    if (image.channels < least || image.channels > most)
        throw Refusal("an image of " + std::to_string(image.channels) + " channels is not of " +
                      (least == most ? "one channel" : "three or four channels"));
}

/// The destination must be empty or fit the region of source, with so many channels.
void requireRoom(const HkImage& destination, const HkImage& source, int channels) {
    if (HkImageAccess::isEmpty(destination)) return;
    require(HkImageAccess::isPicture(destination), "the destination image has no valid pixels");
    require(destination.roiWidth == source.roiWidth && destination.roiHeight == source.roiHeight,
            "the destination's region differs from the source's");
    require(destination.channels == channels,
            "the destination has another channel count than the result");
}

void store(const cv::Mat& result, HkImage& destination) {
    if (HkImageAccess::isEmpty(destination) &&
        !HkImageAccess::allocate(destination, result.cols, result.rows, result.channels(),
                                 HkImageAccess::kRowAlignment, HkImageAccess::Contents::Undefined))
        throw std::bad_alloc();
    result.copyTo(region(destination));
}

/// Applies compute, which keeps size and channels, to the region of src. The result is complete
/// before the destination is touched, so the two may share pixels in any way.
template <typename Compute>
void transformRegion(HkImage* src, HkImage* dst, Compute compute) {
    const HkImage& source = requirePicture(src);
    HkImage& destination = dst ? *dst : *src;
    requireRoom(destination, source, source.channels);
    const cv::Mat before = region(source);
    store(pixels::withAlphaOf(before, compute(before)), destination);
}

bool areApart(const cv::Mat& a, const cv::Mat& b) {
    const std::less<const unsigned char*> isBefore;
    return !isBefore(b.data, a.dataend) || !isBefore(a.data, b.dataend);
}

/// The same pixels, sample by sample.
bool isSame(const cv::Mat& a, const cv::Mat& b) {
    return a.data == b.data && a.step == b.step && a.type() == b.type();
}

/// Applies compute(before, after), which keeps size and channels, to the region of src. compute
/// must work in place, take no heed of what `after` holds, and need no more memory once it writes.
template <typename Compute>
void transformInPlace(HkImage* src, HkImage* dst, Compute compute) {
    const HkImage& source = requirePicture(src);
    HkImage& destination = dst ? *dst : *src;
    requireRoom(destination, source, source.channels);
    const cv::Mat before = region(source);
    if (source.channels != 4 && HkImageAccess::isPicture(destination)) {
        cv::Mat after = region(destination);
        if (isSame(before, after) || areApart(before, after)) return compute(before, after);
    }
    cv::Mat result;
    compute(before, result);
    store(pixels::withAlphaOf(before, result), destination);
}

template <typename Convert>
int convertColour(const char* name, HkImage* src, HkImage* dst, Convert convert) noexcept {
    return guarded(name, [&] {
        requireChannels(requirePicture(src), 3, 4);
        transformRegion(src, dst, convert);
    });
}

/// One-channel pixels in the rows of the picture itself: rows the caller owns stay in use.
void becomeGreyscale(HkImage& image) {
    const cv::Mat colours = pixelsOf(image, image.width, image.height);
    image.channels = 1;
    cv::Mat grey = pixelsOf(image, image.width, image.height);
    pixels::luma(colours, grey);
}

void passes3x3(const cv::Mat& image, cv::Mat& result, unsigned int passes,
               pixels::Extreme extreme) {
    // n passes of 3 x 3 with replicated borders are one window of side 2n + 1.
    const int reach = static_cast<int>(passes);
    pixels::extremeOfWindow(image, result, reach, reach, extreme);
}

int openOrClose(const char* name, HkImage* src, unsigned int size, HkImage* dst,
                pixels::Extreme first, pixels::Extreme second) noexcept {
    return guarded(name, [&] {
        requireWindow(size, kLargestWindow);
        transformInPlace(src, dst, [&](const cv::Mat& before, cv::Mat& after) {
            cv::Mat between;
            passes3x3(before, between, size, first);
            passes3x3(between, after, size, second);
        });
    });
}

}  // namespace

HkImageProcessor::HkImageProcessor() = default;
HkImageProcessor::~HkImageProcessor() = default;

HkImageProcessor* HkImageProcessor::getInstance(void (*messageCallback)(const QString&)) {
    static HkImageProcessor processor;
    if (messageCallback) messageReceiver = messageCallback;
    return &processor;
}

int HkImageProcessor::copyChannel(HkImage* src, int srcChannel, HkImage* dst, int dstChannel) {
    return guarded("Copy channel", [&] {
        const HkImage& source = requirePicture(src);
        HkImage& destination = dst ? *dst : *src;
        require(HkImageAccess::isPicture(destination), "the destination image has no valid pixels");
        requireRoom(destination, source, destination.channels);
        require(srcChannel >= 0 && srcChannel < source.channels,
                "the source has no channel of that number");
        require(dstChannel >= 0 && dstChannel < destination.channels,
                "the destination has no channel of that number");
        cv::Mat before = region(source);
        cv::Mat after = region(destination);
        if (!isSame(before, after) && !areApart(before, after)) before = before.clone();
        pixels::copyChannel(before, srcChannel, after, dstChannel);
    });
}

int HkImageProcessor::RGBtoYUV(HkImage* src, HkImage* dst) {
    return convertColour("RGB to YUV", src, dst, pixels::rgbToYuv);
}

int HkImageProcessor::YUVtoRGB(HkImage* src, HkImage* dst) {
    return convertColour("YUV to RGB", src, dst, pixels::yuvToRgb);
}

int HkImageProcessor::RGBtoHLS(HkImage* src, HkImage* dst) {
    return convertColour("RGB to HLS", src, dst, pixels::rgbToHls);
}

int HkImageProcessor::RGBtoGrayscale(HkImage* src, HkImage* dst) {
    return guarded("RGB to greyscale", [&] {
        const HkImage& source = requirePicture(src);
        requireChannels(source, 3, 4);
        if (!dst || dst == src) return becomeGreyscale(*src);
        requireRoom(*dst, source, 1);
        cv::Mat grey;
        if (HkImageAccess::isPicture(*dst) && areApart(region(source), region(*dst)))
            grey = region(*dst);
        pixels::luma(region(source), grey);
        if (grey.data != dst->data) store(grey, *dst);
    });
}

int HkImageProcessor::invert(HkImage* src, HkImage* dst) {
    return guarded("Invert", [&] {
        transformInPlace(src, dst, [](const cv::Mat& before, cv::Mat& after) {
            cv::bitwise_not(before, after);
        });
    });
}

int HkImageProcessor::blur(HkImage* src, unsigned int size, HkImage* dst) {
    return guarded("Blur", [&] {
        requireWindow(size, kLargestBlur);
        transformRegion(src, dst, [&](const cv::Mat& image) {
            return pixels::gaussian(image, 2 * static_cast<int>(size) - 1);
        });
    });
}

int HkImageProcessor::maxFilter(HkImage* src, unsigned int size, HkImage* dst) {
    return guarded("Maximum filter", [&] {
        requireWindow(size, kLargestWindow);
        transformInPlace(src, dst, [&](const cv::Mat& before, cv::Mat& after) {
            // An even window has its extra pixel on the left and above.
            const int side = static_cast<int>(size);
            pixels::extremeOfWindow(before, after, side / 2, (side - 1) / 2,
                                    pixels::Extreme::Largest);
        });
    });
}

int HkImageProcessor::open(HkImage* src, unsigned int size, HkImage* dst) {
    return openOrClose("Open", src, size, dst, pixels::Extreme::Smallest, pixels::Extreme::Largest);
}

int HkImageProcessor::close(HkImage* src, unsigned int size, HkImage* dst) {
    return openOrClose("Close", src, size, dst, pixels::Extreme::Largest,
                       pixels::Extreme::Smallest);
}

int HkImageProcessor::dilate_erode(HkImage* src, int amount, HkImage* dst) {
    return guarded("Dilate or erode", [&] {
        // Unsigned: the magnitude of the smallest int is not an int.
        const unsigned int passes =
            amount < 0 ? 0u - static_cast<unsigned int>(amount) : static_cast<unsigned int>(amount);
        if (passes > 0) requireWindow(passes, kLargestWindow);
        transformInPlace(src, dst, [&](const cv::Mat& before, cv::Mat& after) {
            passes3x3(before, after, passes,
                      amount < 0 ? pixels::Extreme::Largest : pixels::Extreme::Smallest);
        });
    });
}

int HkImageProcessor::adaptTreshold(HkImage* src, HkImage* dst, int size, double min) {
    return guarded("Adaptive threshold", [&] {
        requireChannels(requirePicture(src), 1, 1);
        require(size <= kLargestNeighbourhood, "the neighbourhood is larger than 2901 pixels");
        require(!std::isnan(min), "the minimal difference is not a number");
        transformRegion(src, dst, [&](const cv::Mat& image) {
            const int side = std::max(size, 3) | 1;
            // OpenCV compares with the mean rounded to a level and the difference rounded up.
            // Beyond 256 levels no difference can change the outcome, but an int could overflow.
            const double difference = std::min(std::max(min, -256.0), 256.0);
            cv::Mat binary;
            cv::adaptiveThreshold(image, binary, 255, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY,
                                  side, difference);
            return binary;
        });
    });
}
