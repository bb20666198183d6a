#include "host/media/companion_tracks.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <new>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

namespace media {

namespace {

constexpr int kTaken = 0;
constexpr int kNotTaken = -1;

std::string countOf(int number, const std::string& what) {
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

double secondsOf(const AVPacket& packet, const AVStream& stream) {
    const std::int64_t time = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
    return time == AV_NOPTS_VALUE ? 0 : static_cast<double>(time) * av_q2d(stream.time_base);
}

}  // namespace

CompanionTracks::CompanionTracks(const std::string& path, double startSeconds,
                                 const std::string& container)
    : m_path(path),
      m_startSeconds(startSeconds),
      m_input(openInput(path)),
      m_packet(av_packet_alloc()) {
    if (!m_input)
        throw MediaError(MediaErrorKind::InvalidData,
                         shown(path) + ": the sound of the video cannot be read; check the file");
    if (!m_packet) throw std::bad_alloc();
    const AVOutputFormat* format = av_guess_format(container.c_str(), nullptr, nullptr);
    std::map<std::string, int> leftOut;
    for (unsigned i = 0; i < m_input->nb_streams; ++i) {
        AVStream& stream = *m_input->streams[i];
        const AVMediaType type = stream.codecpar->codec_type;
        const bool isTaken =
            type == AVMEDIA_TYPE_AUDIO &&
            avformat_query_codec(format, stream.codecpar->codec_id, FF_COMPLIANCE_NORMAL) == 1;
        m_outputStreams.push_back(isTaken ? kTaken : kNotTaken);
        if (isTaken) continue;
        stream.discard = AVDISCARD_ALL;
        if (type == AVMEDIA_TYPE_AUDIO)
            ++leftOut[std::string(avcodec_get_name(stream.codecpar->codec_id)) + " sound track"];
        else if (type == AVMEDIA_TYPE_SUBTITLE)
            ++leftOut["subtitle track"];
        else if (type != AVMEDIA_TYPE_VIDEO)
            ++leftOut["data track"];
    }
    if (m_input->nb_chapters > 0) leftOut["chapter"] = static_cast<int>(m_input->nb_chapters);
    for (const auto& [what, number] : leftOut) m_leftOut.push_back(countOf(number, what));
}

int CompanionTracks::trackCount() const {
    return static_cast<int>(std::count_if(m_outputStreams.begin(), m_outputStreams.end(),
                                          [](int stream) { return stream != kNotTaken; }));
}

void CompanionTracks::addTo(AVFormatContext& output) {
    for (const char* key : {"title", "artist", "author", "comment", "description", "copyright",
                            "creation_time", "date", "location"})
        if (const AVDictionaryEntry* entry = av_dict_get(m_input->metadata, key, nullptr, 0))
            av_dict_set(&output.metadata, key, entry->value, 0);
    for (unsigned i = 0; i < m_input->nb_streams; ++i) {
        if (m_outputStreams[i] == kNotTaken) continue;
        const AVStream& from = *m_input->streams[i];
        AVStream* to = avformat_new_stream(&output, nullptr);
        if (!to || avcodec_parameters_copy(to->codecpar, from.codecpar) < 0) throw std::bad_alloc();
        to->codecpar->codec_tag = 0;  // each container has its own
        to->time_base = from.time_base;
        to->disposition = from.disposition;
        av_dict_copy(&to->metadata, from.metadata, 0);
        m_outputStreams[i] = to->index;
    }
}

void CompanionTracks::failDamaged(int error) const {
    throw MediaError(MediaErrorKind::InvalidData,
                     shown(m_path) + ": the sound of the video is damaged (" + videoReason(error) +
                         "); copy or export it again");
}

bool CompanionTracks::fetch() {
    while (!m_hasPacket) {
        const int result = av_read_frame(m_input.get(), m_packet.get());
        if (result == AVERROR_EOF) return false;
        if (result < 0) failDamaged(result);
        m_hasPacket =
            m_outputStreams[static_cast<std::size_t>(m_packet->stream_index)] != kNotTaken;
        if (!m_hasPacket) av_packet_unref(m_packet.get());
    }
    return true;
}

int CompanionTracks::copyUntil(double seconds, AVFormatContext& output,
                               const std::function<int(AVPacket&)>& write) {
    if (trackCount() == 0) return 0;
    while (fetch()) {
        const AVStream& from = *m_input->streams[m_packet->stream_index];
        if (secondsOf(*m_packet, from) - m_startSeconds > seconds) break;
        m_hasPacket = false;
        const std::int64_t start = std::llround(m_startSeconds / av_q2d(from.time_base));
        if (m_packet->pts != AV_NOPTS_VALUE) m_packet->pts -= start;
        if (m_packet->dts != AV_NOPTS_VALUE) m_packet->dts -= start;
        m_packet->stream_index = m_outputStreams[static_cast<std::size_t>(m_packet->stream_index)];
        m_packet->pos = -1;
        av_packet_rescale_ts(m_packet.get(), from.time_base,
                             output.streams[m_packet->stream_index]->time_base);
        const int result = write(*m_packet);
        av_packet_unref(m_packet.get());
        if (result == AVERROR_INVALIDDATA) failDamaged(result);
        if (result < 0) return result;
    }
    return 0;
}

}  // namespace media
