#include "tests/host/media/video_maker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace {

constexpr int kBits = 10;
constexpr int kSoundRate = 8000;

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

/// The number in black and white blocks, over a gradient that moves.
void drawNumber(AVFrame& frame, int number) {
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            const int bit = number >> (x * kBits / frame.width) & 1;
            frame.data[0][y * frame.linesize[0] + x] = static_cast<std::uint8_t>(
                y < frame.height / 2 ? 40 + 160 * bit : 60 + (x + 3 * number) % 100);
        }
    for (int plane = 1; plane <= 2; ++plane)
        for (int y = 0; y < frame.height / 2; ++y)
            std::fill_n(frame.data[plane] + y * frame.linesize[plane], frame.width / 2,
                        static_cast<std::uint8_t>(100 + (number * 7 + plane * 30) % 50));
}

class Maker {
public:
    Maker(const std::string& path, const VideoRecipe& recipe) : m_recipe(recipe) {
        avformat_alloc_output_context2(&m_output, nullptr, recipe.container, path.c_str());
        require(m_output != nullptr, "no container");
        if (recipe.hasVideo) addVideo();
        if (recipe.hasSound) addSound();
        require(avio_open(&m_output->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0, "no file");
        require(avformat_write_header(m_output, nullptr) >= 0, "no header");
    }
    ~Maker() {
        avcodec_free_context(&m_encoder);
        avio_closep(&m_output->pb);
        avformat_free_context(m_output);
    }
    Maker(const Maker&) = delete;
    Maker& operator=(const Maker&) = delete;

    void run() {
        for (std::size_t i = 0; i < m_recipe.times.size(); ++i) {
            if (m_recipe.hasSound) writeSound(i);
            if (m_recipe.hasVideo) encode(static_cast<int>(i));
        }
        if (m_recipe.hasVideo) send(nullptr);
        require(av_write_trailer(m_output) >= 0, "no trailer");
    }

private:
    void addVideo() {
        const AVCodec* codec = avcodec_find_encoder_by_name(m_recipe.encoder);
        require(codec != nullptr, "no encoder");
        m_encoder = avcodec_alloc_context3(codec);
        m_encoder->width = m_recipe.width;
        m_encoder->height = m_recipe.height;
        m_encoder->pix_fmt = m_recipe.format;
        m_encoder->time_base = m_recipe.timeBase;
        m_encoder->colorspace = m_recipe.matrix;
        m_encoder->color_range = m_recipe.range;
        m_encoder->gop_size = 25;
        m_encoder->max_b_frames = 3;
        m_encoder->thread_count = 1;
        av_opt_set(m_encoder->priv_data, "crf", "12", 0);
        av_opt_set(m_encoder->priv_data, "x264-params", m_recipe.x264Options, 0);
        if ((m_output->oformat->flags & AVFMT_GLOBALHEADER) != 0)
            m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        require(avcodec_open2(m_encoder, codec, nullptr) >= 0, "encoder refused");
        m_video = avformat_new_stream(m_output, nullptr);
        avcodec_parameters_from_context(m_video->codecpar, m_encoder);
        m_video->time_base = m_recipe.timeBase;
        if (std::any_of(std::begin(m_recipe.displayMatrix), std::end(m_recipe.displayMatrix),
                        [](int value) { return value != 0; })) {
            std::uint8_t* data = av_stream_new_side_data(m_video, AV_PKT_DATA_DISPLAYMATRIX,
                                                         sizeof m_recipe.displayMatrix);
            std::copy_n(reinterpret_cast<const std::uint8_t*>(m_recipe.displayMatrix),
                        sizeof m_recipe.displayMatrix, data);
        }
    }

    void addSound() {
        m_sound = avformat_new_stream(m_output, nullptr);
        AVCodecParameters& parameters = *m_sound->codecpar;
        parameters.codec_type = AVMEDIA_TYPE_AUDIO;
        parameters.codec_id = AV_CODEC_ID_PCM_S16LE;
        parameters.format = AV_SAMPLE_FMT_S16;
        parameters.sample_rate = kSoundRate;
        av_channel_layout_default(&parameters.ch_layout, 1);
        parameters.bits_per_coded_sample = 16;
        parameters.block_align = 2;
        m_sound->time_base = {1, kSoundRate};
    }

    void writeSound(std::size_t index) {
        AVPacket* packet = av_packet_alloc();
        av_new_packet(packet, 320);
        for (int i = 0; i < packet->size; ++i)
            packet->data[i] = static_cast<std::uint8_t>(i * 7 + static_cast<int>(index) * 13);
        packet->stream_index = m_sound->index;
        packet->pts = packet->dts =
            av_rescale_q(m_recipe.times[index], m_recipe.timeBase, m_sound->time_base);
        packet->duration = packet->size / 2;
        require(av_interleaved_write_frame(m_output, packet) >= 0, "sound refused");
        av_packet_free(&packet);
    }

    void encode(int number) {
        AVFrame* frame = av_frame_alloc();
        frame->width = m_recipe.width;
        frame->height = m_recipe.height;
        frame->format = m_recipe.format;
        frame->colorspace = m_recipe.matrix;
        frame->color_range = m_recipe.range;
        frame->pts = m_recipe.times[static_cast<std::size_t>(number)];
        av_frame_get_buffer(frame, 0);
        m_recipe.draw ? m_recipe.draw(*frame, number) : drawNumber(*frame, number);
        send(frame);
        av_frame_free(&frame);
    }

    void send(AVFrame* frame) {
        require(avcodec_send_frame(m_encoder, frame) >= 0, "frame refused");
        AVPacket* packet = av_packet_alloc();
        while (avcodec_receive_packet(m_encoder, packet) >= 0) {
            packet->stream_index = m_video->index;
            packet->duration = 1;  // else an MP4 file's list of edits ends before the last frame
            av_packet_rescale_ts(packet, m_encoder->time_base, m_video->time_base);
            require(av_interleaved_write_frame(m_output, packet) >= 0, "packet refused");
        }
        av_packet_free(&packet);
    }

    const VideoRecipe& m_recipe;
    AVFormatContext* m_output = nullptr;
    AVCodecContext* m_encoder = nullptr;
    AVStream* m_video = nullptr;
    AVStream* m_sound = nullptr;
};

AVFormatContext* openForReading(const std::string& path) {
    AVFormatContext* input = nullptr;
    require(avformat_open_input(&input, path.c_str(), nullptr, nullptr) >= 0, "cannot be opened");
    avformat_find_stream_info(input, nullptr);
    return input;
}

}  // namespace

void makeVideo(const std::string& path, const VideoRecipe& recipe) {
    Maker(path, recipe).run();
}

std::vector<std::int64_t> evenTimes(int count) {
    std::vector<std::int64_t> times;
    for (int i = 0; i < count; ++i) times.push_back(i);
    return times;
}

int numberOn(const HkImage& image) {
    int number = 0;
    for (int bit = 0; bit < kBits; ++bit) {
        const int x = (2 * bit + 1) * image.width / (2 * kBits);
        const int y = image.height / 4;
        const unsigned char green = image.data[y * image.step + x * image.channels + 1];
        if (green > 128) number |= 1 << bit;
    }
    return number;
}

std::vector<SoundPacket> soundOf(const std::string& path) {
    AVFormatContext* input = openForReading(path);
    std::vector<SoundPacket> sound;
    AVPacket* packet = av_packet_alloc();
    for (; av_read_frame(input, packet) >= 0; av_packet_unref(packet)) {
        const AVStream& stream = *input->streams[packet->stream_index];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            sound.push_back({av_rescale_q(packet->pts, stream.time_base, {1, 1000}),
                             {packet->data, packet->data + packet->size}});
    }
    av_packet_free(&packet);
    avformat_close_input(&input);
    return sound;
}

AVCodecParameters videoParametersOf(const std::string& path) {
    AVFormatContext* input = openForReading(path);
    const int stream = av_find_best_stream(input, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    AVCodecParameters parameters = *input->streams[stream]->codecpar;
    parameters.extradata = nullptr;  // goes with the file
    avformat_close_input(&input);
    return parameters;
}
