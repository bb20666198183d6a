#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/media/VideoTrack.h"
#include "host/media/atomic_file.h"
#include "host/media/companion_tracks.h"
#include "host/media/video_formats.h"
#include "host/media/video_library.h"

namespace media {

/// When the frames of a video are shown and what is tagged.
struct VideoPlan {
    Ratio timeBase;
    std::vector<std::int64_t> times;      ///< strictly ascending
    std::vector<std::int64_t> durations;  ///< of the same length
    Ratio frameRate;
    Ratio pixelAspect;  ///< unknown: square
    int matrix = AVCOL_SPC_UNSPECIFIED;
    int primaries = AVCOL_PRI_BT709;
    int transfer = AVCOL_TRC_BT709;
};

/// A video being written. Complete with finish(), otherwise nothing stays. One thread at a time.
/// Throws MediaError: CannotCreate when it cannot be begun, ReadWrite when writing fails.
class VideoFile {
public:
    /// companions: sound to go with it, or null.
    VideoFile(const std::string& path, const VideoCodec& codec, int quality, const VideoPlan& plan,
              std::unique_ptr<CompanionTracks> companions);
    ~VideoFile();
    VideoFile(const VideoFile&) = delete;
    VideoFile& operator=(const VideoFile&) = delete;

    /// Makes the file, for pictures of this size and so many channels.
    void begin(int width, int height, int channels);
    bool hasBegun() const { return m_encoder != nullptr; }

    int width() const { return m_encoder->width; }
    int height() const { return m_encoder->height; }
    /// The layout of the pictures that write() takes.
    PixelConverter::Layout layout() const;

    /// Encodes the picture as the index-th of the plan; indices ascend.
    void write(AVFrame& picture, std::size_t index);
    void finish();

private:
    void openEncoder(int width, int height, int channels);
    void drainEncoder();
    int writePacket(AVPacket& packet);
    void copyCompanions(double untilSeconds);
    [[noreturn]] void failWrite(int error) const;

    const std::string m_path;
    const VideoCodec& m_codec;
    const int m_quality;
    const VideoPlan m_plan;
    std::unique_ptr<CompanionTracks> m_companions;
    std::unique_ptr<AtomicFile> m_file;
    AVFormatContext* m_output = nullptr;
    AvOwned<AVCodecContext> m_encoder;
    AvOwned<AVPacket> m_packet;
    std::map<std::int64_t, std::int64_t> m_durations;  // of frames in the encoder, by their time
};

}  // namespace media
