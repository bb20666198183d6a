#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/parseutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <memory>
#include <string>

#include "framework/contract/ImageProcessor/HkImage.h"

namespace media {

/// What the video files of this folder share: owners of libav's objects, its messages and colours.

struct AvDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
template <typename T>
using AvOwned = std::unique_ptr<T, AvDeleter>;

struct InputCloser {
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
};
using AvInput = std::unique_ptr<AVFormatContext, InputCloser>;

/// The name by which the libraries open a file: with its protocol, so that a colon in a file's name
/// means itself.
std::string videoUrl(const std::string& path);

/// Opens a file and learns what tracks it has; null when it is no media file.
AvInput openInput(const std::string& path);

/// Keeps libav from writing to standard error. Called before each use; only the first call counts.
void silenceVideoLibrary();

/// The library's words for one of its error numbers.
std::string videoReason(int error);

/// Listens to what the readers of a file complain about while this lives. The library reads on
/// where a file is cut short or damaged and tells nobody else.
class FileComplaints {
public:
    explicit FileComplaints(const std::string& path);
    ~FileComplaints();
    FileComplaints(const FileComplaints&) = delete;
    FileComplaints& operator=(const FileComplaints&) = delete;

    std::string first() const;  ///< empty when there is none

    struct Entry;

private:
    const std::unique_ptr<Entry> m_entry;
};

/// How many complaints the decoders of this process have had. A decoder hides a damaged part of a
/// picture and says so in its messages only, which do not tell whose decoder it is.
int decoderComplaints();

/// The matrix between YUV and RGB: as tagged, else BT.709 for high definition and BT.601 below.
AVColorSpace matrixOf(int tagged, int width, int height);

/// Converts pictures of one size; one thread at a time. The scaler reads and writes whole vectors,
/// past the end of rows: a picture without room there goes through one that has it.
class PixelConverter {
public:
    struct Layout {
        AVPixelFormat format = AV_PIX_FMT_NONE;
        AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;  ///< of a YUV format
        bool isFullRange = true;                      ///< 0 to 255, not 16 to 235

        bool operator==(const Layout& other) const {
            return format == other.format && matrix == other.matrix &&
                   isFullRange == other.isFullRange;
        }
    };

    /// Fills the region of the picture from planes that libav made. Throws std::bad_alloc when the
    /// library grants no converter.
    void toPicture(const Layout& from, const std::uint8_t* const* planes, const int* steps,
                   HkImage& picture);

    /// Fills a frame that libav made from the region of a picture of its size; throws likewise.
    void fromPicture(const HkImage& picture, const Layout& to, AVFrame& frame);

private:
    void scale(const Layout& from, const std::uint8_t* const* planes, const int* steps,
               const Layout& to, std::uint8_t* const* outPlanes, const int* outSteps, int width,
               int height);
    AVFrame& roomy(const HkImage& picture);

    AvOwned<SwsContext> m_scaler;
    AvOwned<AVFrame> m_roomy;  // the picture with room past its rows
    Layout m_from, m_to;
    int m_width = 0;
    int m_height = 0;
};

/// A frame with room for a picture, its samples undefined. Throws std::bad_alloc.
AvOwned<AVFrame> newAvFrame(AVPixelFormat format, int width, int height);

/// The layout of a picture of so many channels.
PixelConverter::Layout pictureLayout(int channels);

}  // namespace media
