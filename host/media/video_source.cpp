#include "host/media/video_source.h"

#include <ffms.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <set>

#include "host/media/FramesOfFile.h"
#include "host/media/MediaError.h"
#include "host/media/PictureLimits.h"
#include "host/media/VideoTrack.h"
#include "host/media/file_names.h"
#include "host/media/picture_reader.h"
#include "host/media/video_library.h"

namespace media {

namespace {

[[noreturn]] void failInvalid(const std::string& path, const std::string& rest) {
    throw MediaError(MediaErrorKind::InvalidData, shown(path) + ": " + rest);
}

[[noreturn]] void failDamaged(const std::string& path, const std::string& reason) {
    failInvalid(
        path, "the video is damaged or cut short (" + shown(reason) + "); copy or export it again");
}

struct FfmsDeleter {
    void operator()(FFMS_Index* index) const { FFMS_DestroyIndex(index); }
    void operator()(FFMS_VideoSource* video) const { FFMS_DestroyVideoSource(video); }
};

/// Where the indexing library leaves its words.
class FfmsReason {
public:
    FfmsReason() {
        m_info.Buffer = m_text.data();
        m_info.BufferSize = static_cast<int>(m_text.size());
    }
    FfmsReason(const FfmsReason&) = delete;
    FfmsReason& operator=(const FfmsReason&) = delete;

    FFMS_ErrorInfo* info() { return &m_info; }
    std::string text() const {
        const std::string text = m_text.data();
        return text.empty() ? "no reason given" : text;
    }

private:
    std::array<char, 500> m_text{};
    FFMS_ErrorInfo m_info{};
};

bool isPicturesFormat(const AVInputFormat& format) {
    const std::string name = format.name;
    return name.find("_pipe") != std::string::npos || name.find("image2") != std::string::npos ||
           name == "tty" || name == "gif" || name == "apng";
}

/// The bytes of an MPEG transport packet come in a fixed number; 4 more in front on Blu-ray.
void requireWholePackets(const std::string& path, const AVInputFormat& format) {
    if (std::string(format.name) != "mpegts") return;
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size % 188 != 0 && size % 192 != 0 && size % 204 != 0)
        failDamaged(path, "the last packet is not whole");
}

/// The table of an MP4 or MOV file says where each frame is, present or not.
void requireAllPackets(const std::string& path, AVFormatContext& input) {
    std::error_code error;
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path, error));
    if (error || std::string(input.iformat->name).find("mp4") == std::string::npos) return;
    for (unsigned i = 0; i < input.nb_streams; ++i) {
        AVStream* stream = input.streams[i];
        for (int entry = 0; entry < avformat_index_get_entries_count(stream); ++entry) {
            const AVIndexEntry* packet = avformat_index_get_entry(stream, entry);
            if (packet->pos + packet->size > size)
                failDamaged(path, "the end of the file is missing");
        }
    }
}

/// How a video is turned to be seen upright.
struct Turn {
    int quarters = 0;       ///< clockwise
    bool mirrored = false;  ///< left and right exchanged, after it was turned

    bool isNone() const { return quarters == 0 && !mirrored; }
    bool swapsSides() const { return quarters % 2 == 1; }
};

std::unique_ptr<HkImage> newFrame(int width, int height, int channels) {
    // Rows of whole vectors: the converter may write up to the end of the one it works on.
    auto image = std::make_unique<HkImage>(width, height, channels, nullptr, 64u);
    if (!image->data) throw std::bad_alloc();
    return image;
}

/// Copies in squares: a row of the one picture is a column of the other, and a square of both stays
/// in the cache.
std::unique_ptr<HkImage> turned(std::unique_ptr<HkImage> lying, const Turn& turn) {
    if (turn.isNone()) return lying;
    const int channels = lying->channels;
    std::unique_ptr<HkImage> standing =
        newFrame(turn.swapsSides() ? lying->height : lying->width,
                 turn.swapsSides() ? lying->width : lying->height, channels);
    constexpr int kSquare = 32;
    const auto copySquare = [&](int left, int top) {
        for (int y = top; y < std::min(top + kSquare, standing->height); ++y) {
            unsigned char* out = standing->data + static_cast<std::ptrdiff_t>(standing->step) * y +
                                 static_cast<std::ptrdiff_t>(left) * channels;
            for (int x = left; x < std::min(left + kSquare, standing->width); ++x) {
                const int seen = turn.mirrored ? standing->width - 1 - x : x;
                int column = turn.swapsSides() ? y : seen;
                int row = turn.swapsSides() ? seen : y;
                if (turn.quarters >= 2) column = lying->width - 1 - column;
                if (turn.quarters == 1 || turn.quarters == 2) row = lying->height - 1 - row;
                const unsigned char* in = lying->data +
                                          static_cast<std::ptrdiff_t>(lying->step) * row +
                                          static_cast<std::ptrdiff_t>(column) * channels;
                out = std::copy_n(in, channels, out);
            }
        }
    };
    for (int top = 0; top < standing->height; top += kSquare)
        for (int left = 0; left < standing->width; left += kSquare) copySquare(left, top);
    return standing;
}

/// Grey levels of 16 to 235 spread to 0 to 255; the converter takes every grey picture for one of
/// full range.
void spreadGrey(HkImage& image) {
    std::array<unsigned char, 256> table{};
    for (int level = 0; level < 256; ++level)
        table[static_cast<std::size_t>(level)] = static_cast<unsigned char>(
            std::clamp(std::lround((level - 16) * 255.0 / 219), 0L, 255L));
    for (int y = 0; y < image.height; ++y) {
        unsigned char* row = image.data + static_cast<std::ptrdiff_t>(image.step) * y;
        for (int x = 0; x < image.width; ++x)
            row[x * image.channels] = table[row[x * image.channels]];
    }
}

const AVPixFmtDescriptor& describe(int pixelFormat) {
    return *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(pixelFormat));
}

int channelsOf(int pixelFormat) {
    const AVPixFmtDescriptor& format = describe(pixelFormat);
    const bool isGrey = format.nb_components <= 2 && (format.flags & AV_PIX_FMT_FLAG_PAL) == 0;
    const bool hasAlpha = (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    return (isGrey ? 1 : 3) + (hasAlpha ? 1 : 0);
}

class VideoFrames : public FramesOfFile {
public:
    explicit VideoFrames(const std::string& path) : FramesOfFile(path) {
        silenceVideoLibrary();
        FFMS_Init(0, 0);
        m_track.path = path;
        std::error_code error;
        if (std::filesystem::file_size(path, error) == 0)
            failInvalid(path, "the file is empty; copy or export it again");
        openTrack();
        lookAtFile();
        openDecoder();
        lookAtFirstFrame();
        takeTimes();
    }

    std::unique_ptr<HkImage> read(std::int64_t frame, PictureProperties* properties,
                                  std::unique_ptr<HkImage>) const override {
        requireFrame(frame);
        if (properties) *properties = PictureProperties();
        const std::lock_guard<std::mutex> lock(m_mutex);
        try {
            return decodeInOrder(frame);
        } catch (const std::bad_alloc&) {
            throw MediaError(MediaErrorKind::NoMemory,
                             shown(m_path) +
                                 ": there is not enough memory to read a frame; use fewer jobs at "
                                 "a time");
        }
    }

    std::vector<std::string> notices() const override { return m_notices; }

private:
    void openTrack() {
        FfmsReason reason;
        const FileComplaints complaints(m_path);
        const std::string url = videoUrl(m_path);
        FFMS_Indexer* indexer = FFMS_CreateIndexer(url.c_str(), reason.info());
        if (!indexer) {
            const bool isKnown = !complaints.first().empty();
            failInvalid(m_path, "the file holds no video that can be read (" +
                                    (isKnown ? shown(complaints.first())
                                             : std::string("its format is unknown")) +
                                    "); check that it is whole, or convert it");
        }
        FFMS_TrackTypeIndexSettings(indexer, FFMS_TYPE_AUDIO, 0, 0);
        m_index.reset(FFMS_DoIndexing2(indexer, FFMS_IEH_ABORT, reason.info()));
        if (!m_index) failDamaged(m_path, reason.text());
        m_trackNumber =
            FFMS_GetFirstIndexedTrackOfType(m_index.get(), FFMS_TYPE_VIDEO, reason.info());
        if (m_trackNumber < 0)
            failInvalid(m_path, "the file has no video track; give one that has");
        if (!complaints.first().empty()) failDamaged(m_path, complaints.first());
    }

    /// Jumps only where that is exact. The library counts frames from the key frame it jumps to,
    /// and counts wrong where frames that follow it in the file are shown before it (open groups of
    /// pictures): a decoder that begins there leaves them out.
    void openDecoder() {
        FfmsReason reason;
        // With several, a complaint about damage may come after the frame it is about.
        const int threads = 1;
        m_video.reset(
            FFMS_CreateVideoSource(videoUrl(m_path).c_str(), m_trackNumber, m_index.get(), threads,
                                   m_canJump ? FFMS_SEEK_NORMAL : FFMS_SEEK_LINEAR, reason.info()));
        if (!m_video)
            failInvalid(m_path, "the video cannot be decoded (" + shown(reason.text()) +
                                    "); convert it first");
    }

    void lookAtFirstFrame() {
        FfmsReason reason;
        const FFMS_VideoProperties& video = *FFMS_GetVideoProperties(m_video.get());
        const FFMS_Frame* frame = FFMS_GetFrame(m_video.get(), 0, reason.info());
        if (!frame) failDamaged(m_path, reason.text());
        m_position = 0;
        m_width = frame->EncodedWidth;
        m_height = frame->EncodedHeight;
        requireAllowedSize();
        // The library mirrors first and turns then.
        m_turn.mirrored = video.Flip != 0;
        m_turn.quarters = (m_turn.mirrored ? 360 - video.Rotation : video.Rotation) / 90 % 4;
        // Upside down is mirrored and turned by half.
        if (video.Flip < 0) m_turn.quarters = (m_turn.quarters + 2) % 4;
        m_info = {m_width, m_height, channelsOf(frame->EncodedPixelFormat)};
        if (m_turn.swapsSides()) std::swap(m_info.width, m_info.height);
        setFrameCount(static_cast<std::size_t>(video.NumFrames));

        m_track.frameRate = {video.FPSNumerator, video.FPSDenominator};
        m_track.pixelAspect = {video.SARNum, std::max(video.SARDen, 1)};
        if (m_turn.swapsSides() && video.SARNum > 0)
            m_track.pixelAspect = {video.SARDen, video.SARNum};
        m_track.matrix = matrixOf(frame->ColorSpace, m_width, m_height);
        requireKnownColours();
        m_track.primaries = frame->ColorPrimaries;
        m_track.transfer = frame->TransferCharateristics;

        const int bits = describe(frame->EncodedPixelFormat).comp[0].depth;
        if (bits > 8)
            m_notices.push_back(shown(m_path) + ": " + std::to_string(bits) +
                                " bits a sample are cut to 8");
        if (frame->TransferCharateristics == AVCOL_TRC_SMPTE2084 ||
            frame->TransferCharateristics == AVCOL_TRC_ARIB_STD_B67)
            m_notices.push_back(shown(m_path) +
                                ": this is a video of high dynamic range; its levels are taken as "
                                "they are, nothing is mapped to a common screen");
        if (frame->InterlacedFrame)
            m_notices.push_back(shown(m_path) +
                                ": this is an interlaced video; each frame has the lines of both "
                                "fields, and filters see them as one picture");
    }

    void requireKnownColours() const {
        switch (m_track.matrix) {
            case AVCOL_SPC_BT709:
            case AVCOL_SPC_FCC:
            case AVCOL_SPC_BT470BG:
            case AVCOL_SPC_SMPTE170M:
            case AVCOL_SPC_SMPTE240M:
            case AVCOL_SPC_BT2020_NCL:
                return;
            default:
                break;
        }
        const char* name = av_color_space_name(static_cast<AVColorSpace>(m_track.matrix));
        failInvalid(m_path, std::string("its colours are coded as ") + (name ? name : "unknown") +
                                ", which is not read; convert the video to BT.709 first");
    }

    void requireAllowedSize() const {
        const std::string refusal = refusalOfSize(m_width, m_height);
        if (!refusal.empty()) failInvalid(m_path, refusal);
    }

    void lookAtFile() {
        const AvInput input = openInput(m_path);
        if (!input) failDamaged(m_path, "it cannot be opened a second time");
        requireWholePackets(m_path, *input->iformat);
        requireAllPackets(m_path, *input);
        if (input->start_time != AV_NOPTS_VALUE)
            m_track.startSeconds = static_cast<double>(input->start_time) / AV_TIME_BASE;
        int videos = 0;
        for (unsigned i = 0; i < input->nb_streams; ++i) {
            const AVStream& stream = *input->streams[i];
            if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
                (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0)
                ++videos;
        }
        if (videos > 1)
            m_notices.push_back(shown(m_path) + ": the first of its " + std::to_string(videos) +
                                " video tracks is read, the others are left out");
        lookAtPackets(*input);
    }

    void takeTimes() {
        FFMS_Track* track = FFMS_GetTrackFromVideo(m_video.get());
        const FFMS_TrackTimeBase& base = *FFMS_GetTimeBase(track);  // in milliseconds
        AVRational seconds{0, 1};
        av_reduce(&seconds.num, &seconds.den, base.Num, base.Den * 1000, INT32_MAX);
        m_track.timeBase = {seconds.num, seconds.den};
        const std::int64_t start = std::llround(m_track.startSeconds / av_q2d(seconds));
        // The index of some containers has the times of decoding.
        const bool arePacketTimesKnown = m_packetTimes.size() == frames().size();
        for (std::size_t i = 0; i < frames().size(); ++i)
            m_track.timeStamps.push_back(
                (arePacketTimesKnown ? m_packetTimes[i]
                                     : FFMS_GetFrameInfo(track, static_cast<int>(i))->PTS) -
                start);
        m_packetTimes = {};
        const std::vector<std::int64_t>& times = m_track.timeStamps;
        const FFMS_VideoProperties& video = *FFMS_GetVideoProperties(m_video.get());
        const double last = video.LastEndTime - video.LastTime;
        m_track.lastDuration = std::llround(last / av_q2d(seconds));
        if (m_track.lastDuration <= 0)
            m_track.lastDuration = times.size() > 1 ? times.back() - times[times.size() - 2] : 1;
    }

    /// Looks at the head of each packet: when it is shown, and whether the decoder can begin there.
    void lookAtPackets(AVFormatContext& input) {
        const AvOwned<AVPacket> packet(av_packet_alloc());
        if (!packet) throw std::bad_alloc();
        std::vector<std::int64_t> corruptTimes;
        std::int64_t keyTime = INT64_MIN;
        bool allAreKeys = true;
        bool allHaveTimes = true;
        for (; av_read_frame(&input, packet.get()) >= 0; av_packet_unref(packet.get())) {
            if (packet->stream_index != m_trackNumber) continue;
            if ((packet->flags & AV_PKT_FLAG_CORRUPT) != 0) corruptTimes.push_back(packet->pts);
            const bool isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
            allAreKeys = allAreKeys && isKey;
            allHaveTimes = allHaveTimes && packet->pts != AV_NOPTS_VALUE;
            if (packet->pts < keyTime) m_canJump = false;
            if (isKey) keyTime = packet->pts;
            m_packetTimes.push_back(packet->pts);
        }
        m_canJump = allAreKeys || (m_canJump && allHaveTimes);
        if (!allHaveTimes) m_packetTimes.clear();
        std::sort(m_packetTimes.begin(), m_packetTimes.end());
        for (const std::int64_t time : corruptTimes)
            m_corruptFrames.insert(
                std::lower_bound(m_packetTimes.begin(), m_packetTimes.end(), time) -
                m_packetTimes.begin());
    }

    /// What came of a frame that was decoded before it was asked for.
    struct Ahead {
        std::unique_ptr<HkImage> image;
        std::optional<MediaError> error;
    };

    /// Several threads that take the next frame each do not ask exactly in order. A frame that is
    /// passed is kept for the one who will ask for it: going back to it would mean to decode again
    /// from the last key frame on.
    std::unique_ptr<HkImage> decodeInOrder(std::int64_t frame) const {
        constexpr std::int64_t kMostAhead = 8;
        if (const auto found = m_ahead.find(frame); found != m_ahead.end()) {
            Ahead ahead = std::move(found->second);
            m_ahead.erase(found);
            if (ahead.error) throw MediaError(*ahead.error);
            return std::move(ahead.image);
        }
        if (frame > m_position && frame - m_position <= kMostAhead)
            while (m_position + 1 < frame) {
                Ahead ahead;
                try {
                    ahead.image = decode(m_position + 1);
                } catch (const MediaError& error) {
                    ahead.error = error;
                }
                m_ahead[m_position] = std::move(ahead);
                if (m_ahead.size() > kMostAhead) m_ahead.erase(m_ahead.begin());
            }
        return decode(frame);
    }

    std::unique_ptr<HkImage> decode(std::int64_t number) const {
        FfmsReason reason;
        // After a jump a decoder complains of frames that it lacks and that are not shown.
        const bool isNext = number == m_position + 1;
        const int complaintsBefore = decoderComplaints();
        const FFMS_Frame* frame =
            FFMS_GetFrame(m_video.get(), static_cast<int>(number), reason.info());
        m_position = number;
        const std::string name = "frame " + std::to_string(number);
        if (!frame) failDamaged(m_path, name + ": " + reason.text());
        if (m_corruptFrames.count(number) != 0)
            failDamaged(m_path, "a part of " + name + " is missing");
        if (isNext && decoderComplaints() != complaintsBefore)
            failDamaged(m_path, name + " or one near it cannot be decoded");
        if (frame->EncodedWidth != m_width || frame->EncodedHeight != m_height)
            failInvalid(m_path, name + " is of " + std::to_string(frame->EncodedWidth) + " x " +
                                    std::to_string(frame->EncodedHeight) +
                                    " pixels, those before it of " + std::to_string(m_width) +
                                    " x " + std::to_string(m_height) +
                                    "; cut the video there, or scale it to one size");
        return turned(toPicture(*frame), m_turn);
    }

    std::unique_ptr<HkImage> toPicture(const FFMS_Frame& frame) const {
        std::unique_ptr<HkImage> image = newFrame(m_width, m_height, m_info.channels);
        const AVPixFmtDescriptor& format = describe(frame.EncodedPixelFormat);
        const bool isRgb = (format.flags & AV_PIX_FMT_FLAG_RGB) != 0;
        const bool isFullRange = isRgb || frame.ColorRange == FFMS_CR_JPEG ||
                                 std::string(format.name).rfind("yuvj", 0) == 0;
        const PixelConverter::Layout layout = {static_cast<AVPixelFormat>(frame.EncodedPixelFormat),
                                               matrixOf(frame.ColorSpace, m_width, m_height),
                                               isFullRange};
        m_converter.toPicture(layout, frame.Data, frame.Linesize, *image);
        if (channelsOf(frame.EncodedPixelFormat) <= 2 && frame.ColorRange == FFMS_CR_MPEG)
            spreadGrey(*image);
        return image;
    }

    Turn m_turn;
    std::vector<std::string> m_notices;
    int m_trackNumber = -1;
    bool m_canJump = true;
    std::set<std::int64_t> m_corruptFrames;   // those whose packets are not whole
    std::vector<std::int64_t> m_packetTimes;  // ascending; empty when not all have one
    int m_width = 0;                          // as stored, before it is turned
    int m_height = 0;

    // One decoder serves all threads.
    mutable std::mutex m_mutex;
    std::unique_ptr<FFMS_Index, FfmsDeleter> m_index;
    std::unique_ptr<FFMS_VideoSource, FfmsDeleter> m_video;
    mutable std::int64_t m_position = -1;  // the frame decoded last
    mutable std::map<std::int64_t, Ahead> m_ahead;
    mutable PixelConverter m_converter;
};

}  // namespace

bool isVideo(const std::string& path) {
    static const std::set<std::string> kSuffixes = {
        ".mp4", ".m4v",  ".mov", ".mkv", ".webm", ".avi", ".ts",   ".m2ts", ".mts",
        ".mpg", ".mpeg", ".m2v", ".vob", ".wmv",  ".asf", ".flv",  ".3gp",  ".3g2",
        ".ogv", ".mxf",  ".y4m", ".dv",  ".h264", ".264", ".h265", ".hevc"};
    const std::string suffix = suffixOf(fileNameOf(path));
    if (kSuffixes.count(suffix) != 0) return true;
    if (hasPictureSuffix(fileNameOf(path))) return false;
    const AvInput input = openInput(path);
    if (!input || isPicturesFormat(*input->iformat)) return false;
    return av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0) >= 0;
}

std::unique_ptr<MediaSource> openVideo(const std::string& path) {
    return std::make_unique<VideoFrames>(path);
}

}  // namespace media
