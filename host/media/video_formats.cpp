#include "host/media/video_formats.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

namespace media {

namespace {

// H.265 reaches the same quality at a rate factor about two steps higher.
constexpr std::array<VideoCodec, 6> kCodecs = {{{"h264", "libx264", 18},
                                                {"h265", "libx265", 20},
                                                {"prores", "prores_ks", -1},
                                                {"ffv1", "ffv1", -1},
                                                {"apng", "apng", -1},
                                                {"webp", "libwebp", -1}}};

/// The first codec named is the one taken if the user names none.
struct Container {
    const char* suffix;
    const char* format;
    std::array<const char*, 4> codecs;
};
constexpr Container kContainers[] = {
    {".mp4", "mp4", {"h264", "h265"}},
    {".m4v", "mp4", {"h264", "h265"}},
    {".mov", "mov", {"prores", "h264", "h265"}},
    {".mkv", "matroska", {"ffv1", "h264", "h265", "prores"}},
    {".apng", "apng", {"apng"}},
    {".webp", "webp", {"webp"}},
};

const Container* containerFor(const std::string& path) {
    const std::string suffix = suffixOf(fileNameOf(path));
    const auto* found =
        std::find_if(std::begin(kContainers), std::end(kContainers),
                     [&](const Container& container) { return suffix == container.suffix; });
    return found == std::end(kContainers) ? nullptr : found;
}

const VideoCodec& codecNamed(const std::string& name) {
    return *std::find_if(kCodecs.begin(), kCodecs.end(),
                         [&](const VideoCodec& codec) { return name == codec.name; });
}

[[noreturn]] void failCreate(const std::string& path, const std::string& rest) {
    throw MediaError(MediaErrorKind::CannotCreate, shown(path) + ": " + rest);
}

}  // namespace

bool VideoCodec::holds(int channels) const {
    const bool hasAlpha = channels == 2 || channels == 4;
    return !hasAlpha || std::strcmp(name, "ffv1") == 0 || std::strcmp(name, "prores") == 0 ||
           isOfPictures();
}

bool VideoCodec::isOfPictures() const {
    return std::strcmp(name, "apng") == 0 || std::strcmp(name, "webp") == 0;
}

int VideoCodec::largestSide() const {
    constexpr int kOfWebp = 16383;
    return std::strcmp(name, "webp") == 0 ? kOfWebp : std::numeric_limits<int>::max();
}

AVPixelFormat VideoCodec::pixelFormat(int width, int height, int channels) const {
    const bool hasAlpha = channels == 2 || channels == 4;
    if (std::strcmp(name, "ffv1") == 0)
        return channels == 1 ? AV_PIX_FMT_GRAY8 : hasAlpha ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR0;
    if (std::strcmp(name, "apng") == 0) return pictureLayout(channels).format;
    if (std::strcmp(name, "webp") == 0) return AV_PIX_FMT_BGRA;
    if (std::strcmp(name, "prores") == 0)
        return hasAlpha ? AV_PIX_FMT_YUVA444P10 : AV_PIX_FMT_YUV422P10;
    // Half the columns or rows of an odd number are no whole number.
    return width % 2 == 0 && height % 2 == 0 ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV444P;
}

bool isWritableVideo(const std::string& fileName) {
    return containerFor(fileName) != nullptr;
}

std::string writableVideoSuffixes() {
    return ".mp4, .mov, .mkv, .apng or .webp";
}

std::vector<std::string> videoCodecNames() {
    std::vector<std::string> names;
    names.reserve(std::size(kCodecs));
    for (const VideoCodec& codec : kCodecs) names.emplace_back(codec.name);
    return names;
}

bool parseFrameRate(const std::string& text, Ratio& rate) {
    constexpr double kFastest = 1000;
    const bool isNumber = text.find_first_not_of("0123456789./") == std::string::npos;
    AVRational parsed{};
    if (!isNumber || av_parse_video_rate(&parsed, text.c_str()) < 0) return false;
    rate = {parsed.num, parsed.den};
    return av_q2d(parsed) <= kFastest;
}

std::string containerOf(const std::string& path) {
    return containerFor(path)->format;
}

const VideoCodec& codecFor(const std::string& path, const VideoOptions& options) {
    const Container& container = *containerFor(path);
    const std::string name = options.codec.empty() ? container.codecs[0] : options.codec;
    std::string valid;
    bool isTaken = false;
    for (const char* candidate : container.codecs) {
        if (!candidate) break;
        isTaken = isTaken || name == candidate;
        valid += (valid.empty() ? "" : ", ") + std::string(candidate);
    }
    if (!isTaken)
        failCreate(path, "videos with the codec " + name + " are not written to " +
                             container.suffix + " files; valid: " + valid);
    const VideoCodec& codec = codecNamed(name);
    if (options.quality >= 0 && codec.quality < 0)
        failCreate(path, "--quality is for h264 and h265, the codec here is " + name +
                             "; leave it out or choose another --codec");
    return codec;
}

}  // namespace media
