#include "host/media/video_library.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <list>
#include <mutex>
#include <new>

#include "host/media/file_names.h"

namespace media {

struct FileComplaints::Entry {
    std::string url;
    std::string first;
};

namespace {

std::atomic<int> g_decoderComplaints{0};

/// Those who listen, and the lock that guards them and what they heard.
struct Listeners {
    std::mutex mutex;
    std::list<FileComplaints::Entry*> entries;
};
Listeners& listeners() {
    static Listeners all;
    return all;
}

void hear(void* context, int level, const char* format, std::va_list arguments) {
    if (level > AV_LOG_ERROR || !context) return;
    const AVClass* kind = *static_cast<AVClass**>(context);
    if (kind == avcodec_get_class()) {
        const auto* codec = static_cast<AVCodecContext*>(context);
        if (codec->codec_type == AVMEDIA_TYPE_VIDEO && codec->codec &&
            av_codec_is_decoder(codec->codec))
            ++g_decoderComplaints;
    } else if (kind == avformat_get_class()) {
        const auto* file = static_cast<AVFormatContext*>(context);
        if (!file->url) return;
        const std::lock_guard<std::mutex> lock(listeners().mutex);
        for (FileComplaints::Entry* entry : listeners().entries)
            if (entry->url == file->url && entry->first.empty()) {
                std::array<char, 200> text{};
                std::vsnprintf(text.data(), text.size(), format, arguments);
                entry->first = text.data();
                return;
            }
    }
}

int scalerMatrix(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709:
            return SWS_CS_ITU709;
        case AVCOL_SPC_FCC:
            return SWS_CS_FCC;
        case AVCOL_SPC_SMPTE240M:
            return SWS_CS_SMPTE240M;
        case AVCOL_SPC_BT2020_NCL:
            return SWS_CS_BT2020;
        default:
            return SWS_CS_ITU601;
    }
}

/// What most videos are has a way of its own from YUV to RGB that takes a tenth of the time and
/// spreads a chroma sample over its pixels; the way back averages them, so that a video that is
/// only read and written keeps its colours. Everything else goes the exact way.
int scalerFlags(AVPixelFormat from, AVPixelFormat to) {
    const bool isCommon = from == AV_PIX_FMT_YUV420P || from == AV_PIX_FMT_YUVJ420P ||
                          from == AV_PIX_FMT_YUV422P || from == AV_PIX_FMT_YUVJ422P;
    const int flags = SWS_BILINEAR | SWS_FULL_CHR_H_INP;
    return isCommon && to == AV_PIX_FMT_RGB24 ? flags
                                              : flags | SWS_FULL_CHR_H_INT | SWS_ACCURATE_RND;
}

}  // namespace

std::string videoUrl(const std::string& path) {
    return "file:" + path;
}

void silenceVideoLibrary() {
    [[maybe_unused]] static const bool done = (av_log_set_callback(hear), true);
}

std::string videoReason(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

FileComplaints::FileComplaints(const std::string& path) : m_entry(new Entry{videoUrl(path), {}}) {
    const std::lock_guard<std::mutex> lock(listeners().mutex);
    listeners().entries.push_back(m_entry.get());
}

FileComplaints::~FileComplaints() {
    const std::lock_guard<std::mutex> lock(listeners().mutex);
    listeners().entries.remove(m_entry.get());
}

std::string FileComplaints::first() const {
    const std::lock_guard<std::mutex> lock(listeners().mutex);
    return m_entry->first.substr(0, m_entry->first.find('\n'));
}

int decoderComplaints() {
    return g_decoderComplaints.load();
}

AvInput openInput(const std::string& path) {
    silenceVideoLibrary();
    AVFormatContext* input = nullptr;
    if (avformat_open_input(&input, videoUrl(path).c_str(), nullptr, nullptr) < 0) return nullptr;
    AvInput owned(input);
    return avformat_find_stream_info(input, nullptr) < 0 ? nullptr : std::move(owned);
}

AVColorSpace matrixOf(int tagged, int width, int height) {
    const bool isMatrix =
        tagged != AVCOL_SPC_UNSPECIFIED && tagged != AVCOL_SPC_RESERVED && tagged != AVCOL_SPC_RGB;
    if (isMatrix) return static_cast<AVColorSpace>(tagged);
    return std::max(width, height) >= 1280 || std::min(width, height) >= 720 ? AVCOL_SPC_BT709
                                                                             : AVCOL_SPC_SMPTE170M;
}

void PixelConverter::toPicture(const Layout& from, const std::uint8_t* const* planes,
                               const int* steps, HkImage& picture) {
    const AVFrame& room = roomy(picture);
    scale(from, planes, steps, pictureLayout(picture.channels), room.data, room.linesize,
          room.width, room.height);
    av_image_copy_plane(picture.data, picture.step, room.data[0], room.linesize[0],
                        room.width * picture.channels, room.height);
}

void PixelConverter::fromPicture(const HkImage& picture, const Layout& to, AVFrame& frame) {
    const AVFrame& room = roomy(picture);
    av_image_copy_plane(room.data[0], room.linesize[0], picture.data, picture.step,
                        room.width * picture.channels, room.height);
    scale(pictureLayout(picture.channels), room.data, room.linesize, to, frame.data, frame.linesize,
          room.width, room.height);
}

AVFrame& PixelConverter::roomy(const HkImage& picture) {
    const AVPixelFormat format = pictureLayout(picture.channels).format;
    if (!m_roomy || m_roomy->format != format || m_roomy->width != picture.roiWidth ||
        m_roomy->height != picture.roiHeight)
        m_roomy = newAvFrame(format, picture.roiWidth, picture.roiHeight);
    return *m_roomy;
}

void PixelConverter::scale(const Layout& from, const std::uint8_t* const* planes, const int* steps,
                           const Layout& to, std::uint8_t* const* outPlanes, const int* outSteps,
                           int width, int height) {
    const bool isReady =
        m_scaler && from == m_from && to == m_to && width == m_width && height == m_height;
    if (!isReady) {
        m_scaler.reset(sws_getContext(width, height, from.format, width, height, to.format,
                                      scalerFlags(from.format, to.format), nullptr, nullptr,
                                      nullptr));
        if (!m_scaler) throw std::bad_alloc();
        const int one = 1 << 16;  // contrast and saturation as they are
        sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(scalerMatrix(from.matrix)),
                                 from.isFullRange ? 1 : 0,
                                 sws_getCoefficients(scalerMatrix(to.matrix)),
                                 to.isFullRange ? 1 : 0, 0, one, one);
        m_from = from;
        m_to = to;
        m_width = width;
        m_height = height;
    }
    sws_scale(m_scaler.get(), planes, steps, 0, height, outPlanes, outSteps);
}

AvOwned<AVFrame> newAvFrame(AVPixelFormat format, int width, int height) {
    AvOwned<AVFrame> frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    return frame;
}

PixelConverter::Layout pictureLayout(int channels) {
    constexpr std::array<AVPixelFormat, 4> kFormats = {AV_PIX_FMT_GRAY8, AV_PIX_FMT_YA8,
                                                       AV_PIX_FMT_RGB24, AV_PIX_FMT_RGBA};
    return {kFormats.at(static_cast<std::size_t>(channels) - 1), AVCOL_SPC_UNSPECIFIED, true};
}

}  // namespace media
