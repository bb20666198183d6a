#include "host/media/video_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <limits>
#include <new>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

namespace media {

namespace {

AVRational rational(const Ratio& ratio) {
    return {ratio.numerator, ratio.denominator};
}

bool isYuv(AVPixelFormat format) {
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    return (description.flags & AV_PIX_FMT_FLAG_RGB) == 0 && description.nb_components >= 3;
}

/// The writer of WebP files leaves each frame to be blended over the last one. Sets in the head of
/// each that it takes its place. False when the file cannot be read or written.
bool replaceFrames(const std::string& path) {
    constexpr std::uint64_t kFirst = 12, kHead = 8, kFlags = 15;
    constexpr char kReplaces = 2;
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    std::array<char, kHead> head{};
    for (std::uint64_t at = kFirst;
         file.seekg(static_cast<std::streamoff>(at)) && file.read(head.data(), head.size());) {
        std::uint64_t size = 0;
        for (std::size_t i = 4; i-- > 0;)
            size = size << 8 | static_cast<unsigned char>(head[4 + i]);
        if (std::string(head.data(), 4) == "ANMF") {
            file.seekp(static_cast<std::streamoff>(at + kHead + kFlags));
            file.put(kReplaces);
        }
        at += kHead + size + size % 2;
    }
    const bool isAtEnd = file.eof();
    file.clear();
    return isAtEnd && file.flush();
}

}  // namespace

VideoFile::VideoFile(const std::string& path, const VideoCodec& codec, int quality,
                     const VideoPlan& plan, std::unique_ptr<CompanionTracks> companions)
    : m_path(path),
      m_codec(codec),
      m_quality(quality),
      m_plan(plan),
      m_companions(std::move(companions)),
      m_packet(av_packet_alloc()) {
    silenceVideoLibrary();
    if (!m_packet) throw std::bad_alloc();
}

VideoFile::~VideoFile() {
    if (!m_output) return;
    avio_closep(&m_output->pb);
    avformat_free_context(m_output);
}

void VideoFile::failWrite(int error) const {
    throw MediaError(MediaErrorKind::ReadWrite, shown(m_path) + ": writing failed (" +
                                                    videoReason(error) + "); " +
                                                    adviceOnWriting(AVUNERROR(error)));
}

void VideoFile::openEncoder(int width, int height, int channels) {
    const AVCodec* codec = avcodec_find_encoder_by_name(m_codec.encoder);
    if (!codec)
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(m_path) + ": the video libraries here have no encoder " +
                             m_codec.encoder + "; choose another --codec");
    AvOwned<AVCodecContext> encoder(avcodec_alloc_context3(codec));
    if (!encoder) throw std::bad_alloc();
    encoder->width = width;
    encoder->height = height;
    encoder->pix_fmt = m_codec.pixelFormat(width, height, channels);
    encoder->time_base = rational(m_plan.timeBase);
    encoder->framerate = rational(m_plan.frameRate);
    if (m_plan.pixelAspect.numerator > 0)
        encoder->sample_aspect_ratio = rational(m_plan.pixelAspect);
    encoder->color_primaries = static_cast<AVColorPrimaries>(m_plan.primaries);
    encoder->color_trc = static_cast<AVColorTransferCharacteristic>(m_plan.transfer);
    if (m_codec.isOfPictures()) {
        // Tags of videos would change how a picture is shown.
        encoder->color_primaries = AVCOL_PRI_UNSPECIFIED;
        encoder->color_trc = AVCOL_TRC_UNSPECIFIED;
    }
    if (isYuv(encoder->pix_fmt)) {
        encoder->color_range = AVCOL_RANGE_MPEG;
        encoder->colorspace = matrixOf(m_plan.matrix, width, height);
        if (encoder->pix_fmt == AV_PIX_FMT_YUV420P)
            encoder->chroma_sample_location = AVCHROMA_LOC_LEFT;
    }
    encoder->thread_count = 0;  // as the processor has
    if ((m_output->oformat->flags & AVFMT_GLOBALHEADER) != 0)
        encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;

    AVDictionary* options = nullptr;
    const std::string name = m_codec.name;
    if (m_codec.quality >= 0)
        av_dict_set_int(&options, "crf", m_quality >= 0 ? m_quality : m_codec.quality, 0);
    if (name == "h265") {
        av_dict_set(&options, "x265-params", "log-level=none", 0);
        encoder->codec_tag = MKTAG('h', 'v', 'c', '1');  // the tag that every player knows
        if (std::strcmp(m_output->oformat->name, "matroska") == 0) encoder->codec_tag = 0;
    }
    if (name == "apng") av_dict_set(&options, "pred", "mixed", 0);
    if (name == "webp") av_dict_set(&options, "lossless", "1", 0);
    if (name == "prores") av_dict_set(&options, "profile", channels % 2 == 0 ? "4444" : "hq", 0);
    if (name == "ffv1") {
        // Slices let several threads work on a frame; a number that does not depend on the machine,
        // so that the bytes do not. Small pictures cannot be cut into so many: an older version of
        // the format, which knows none, holds them.
        constexpr int kSmallestSliced = 128;
        const bool isSliced = width >= kSmallestSliced && height >= kSmallestSliced;
        encoder->level = isSliced ? 3 : 1;
        encoder->slices = isSliced ? 16 : 0;
        encoder->gop_size = 1;  // each frame stands for itself
        av_dict_set(&options, "slicecrc", isSliced ? "1" : "0", 0);
    }
    const int result = avcodec_open2(encoder.get(), codec, &options);
    av_dict_free(&options);
    if (result < 0)
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(m_path) + ": pictures of " + std::to_string(width) + " x " +
                             std::to_string(height) + " pixels cannot be written with the codec " +
                             name + " (" + videoReason(result) + "); choose another --codec");
    m_encoder = std::move(encoder);
}

void VideoFile::begin(int width, int height, int channels) {
    m_file = std::make_unique<AtomicFile>(m_path);
    const std::string container = containerOf(m_path);
    if (avformat_alloc_output_context2(&m_output, nullptr, container.c_str(),
                                       m_file->openName().c_str()) < 0)
        throw std::bad_alloc();
    openEncoder(width, height, channels);
    AVStream* stream = avformat_new_stream(m_output, nullptr);
    if (!stream || avcodec_parameters_from_context(stream->codecpar, m_encoder.get()) < 0)
        throw std::bad_alloc();
    stream->time_base = m_encoder->time_base;
    stream->avg_frame_rate = m_encoder->framerate;
    stream->sample_aspect_ratio = m_encoder->sample_aspect_ratio;
    if (m_companions) m_companions->addTo(*m_output);

    int result = avio_open(&m_output->pb, m_file->openName().c_str(), AVIO_FLAG_READ_WRITE);
    if (result < 0)
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(m_path) + ": the file cannot be created (" + videoReason(result) +
                             "); choose another folder");
    AVDictionary* options = nullptr;
    if (container == "apng") {
        // Else it is shown as long as the one before it.
        const AVRational unit = rational(m_plan.timeBase);
        const std::string last =
            std::to_string(m_plan.durations.back() * unit.num) + '/' + std::to_string(unit.den);
        av_dict_set(&options, "final_delay", last.c_str(), 0);
    }
    // Played again and again, as animated pictures are.
    if (container == "apng") av_dict_set(&options, "plays", "0", 0);
    if (container == "webp") av_dict_set(&options, "loop", "0", 0);
    result = avformat_write_header(m_output, &options);
    av_dict_free(&options);
    if (result < 0) failWrite(result);
}

PixelConverter::Layout VideoFile::layout() const {
    return {m_encoder->pix_fmt, m_encoder->colorspace, !isYuv(m_encoder->pix_fmt)};
}

int VideoFile::writePacket(AVPacket& packet) {
    const int result = av_interleaved_write_frame(m_output, &packet);
    return result < 0 ? result : m_output->pb->error;
}

void VideoFile::copyCompanions(double untilSeconds) {
    if (!m_companions) return;
    const int result = m_companions->copyUntil(
        untilSeconds, *m_output, [this](AVPacket& packet) { return writePacket(packet); });
    if (result < 0) failWrite(result);
}

void VideoFile::drainEncoder() {
    for (;;) {
        const int result = avcodec_receive_packet(m_encoder.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
        if (result < 0) failWrite(result);
        if (const auto found = m_durations.find(m_packet->pts); found != m_durations.end()) {
            m_packet->duration = found->second;
            m_durations.erase(found);
        }
        const AVStream& stream = *m_output->streams[0];
        m_packet->stream_index = 0;
        copyCompanions(static_cast<double>(m_packet->dts) * av_q2d(m_encoder->time_base));
        av_packet_rescale_ts(m_packet.get(), m_encoder->time_base, stream.time_base);
        const int written = writePacket(*m_packet);
        if (written < 0) failWrite(written);
    }
}

void VideoFile::write(AVFrame& picture, std::size_t index) {
    picture.pts = m_plan.times[index];
    picture.pict_type = AV_PICTURE_TYPE_NONE;
    m_durations[picture.pts] = m_plan.durations[index];
    const int result = avcodec_send_frame(m_encoder.get(), &picture);
    if (result < 0) failWrite(result);
    drainEncoder();
}

void VideoFile::finish() {
    int result = avcodec_send_frame(m_encoder.get(), nullptr);
    if (result < 0) failWrite(result);
    drainEncoder();
    copyCompanions(std::numeric_limits<double>::infinity());
    result = av_write_trailer(m_output);
    if (result >= 0) result = m_output->pb->error;
    const int closed = avio_closep(&m_output->pb);
    if (result < 0 || closed < 0) failWrite(result < 0 ? result : closed);
    if (std::strcmp(m_codec.name, "webp") == 0 && !replaceFrames(m_file->openName()))
        failWrite(AVERROR(EIO));
    m_file->publish();
}

}  // namespace media
