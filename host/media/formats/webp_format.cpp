// WebP through the format's own library: stills, and the pictures of animated files, composited.

#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <new>

#include "host/media/formats/Format.h"
#include "host/media/formats/camera_data.h"

namespace media::formats {

namespace {

constexpr double kMostPerByte = 100000;  // pictures of one colour take almost nothing

struct WebpDeleter {
    void operator()(WebPDemuxer* container) const { WebPDemuxDelete(container); }
    void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};

class WebpAnimation : public AnimationDecoder {
public:
    WebpAnimation(const Bytes& file, WebPDemuxer& container) : m_data{file.data, file.size} {
        m_head.width = static_cast<int>(WebPDemuxGetI(&container, WEBP_FF_CANVAS_WIDTH));
        m_head.height = static_cast<int>(WebPDemuxGetI(&container, WEBP_FF_CANVAS_HEIGHT));
        m_head.channels = lookAtFrames(container) ? 4 : 3;
        m_head.leastBytes =
            static_cast<double>(m_head.width) * m_head.height * m_head.channels / kMostPerByte;
    }

    const unsigned char* next() override {
        if (!m_decoder) {
            WebPAnimDecoderOptions options;
            WebPAnimDecoderOptionsInit(&options);
            m_decoder.reset(WebPAnimDecoderNew(&m_data, &options));
            if (!m_decoder) throw std::bad_alloc();
        }
        unsigned char* canvas = nullptr;
        int time = 0;
        if (!WebPAnimDecoderGetNext(m_decoder.get(), &canvas, &time))
            refuseDamaged("a frame of its animation cannot be decoded");
        if (m_head.channels == 4) return canvas;
        const std::size_t pixels =
            static_cast<std::size_t>(m_head.width) * static_cast<std::size_t>(m_head.height);
        m_opaque.resize(3 * pixels);
        for (std::size_t i = 0; i < pixels; ++i)
            std::copy_n(canvas + 4 * i, 3, m_opaque.data() + 3 * i);
        return m_opaque.data();
    }

    void rewind() override {
        if (m_decoder) WebPAnimDecoderReset(m_decoder.get());
    }

private:
    /// True when a pixel may be transparent: frames that only change some pixels of an opaque one
    /// have alpha too.
    bool lookAtFrames(WebPDemuxer& container) {
        bool isSeenThrough = false;
        bool isCleared = false;
        WebPIterator frame;
        int more = WebPDemuxGetFrame(&container, 1, &frame);
        for (; more; more = WebPDemuxNextFrame(&frame)) {
            const bool isFirst = m_delays.empty();
            const bool isCanvas = frame.width == m_head.width && frame.height == m_head.height;
            const bool isBlended = !isFirst && frame.blend_method == WEBP_MUX_BLEND;
            if ((isFirst && !isCanvas) || (frame.has_alpha && !isBlended) || isCleared)
                isSeenThrough = true;
            isCleared = frame.dispose_method == WEBP_MUX_DISPOSE_BACKGROUND;
            m_delays.push_back({frame.duration, 1000});
        }
        WebPDemuxReleaseIterator(&frame);
        return isSeenThrough;
    }

    const WebPData m_data;
    std::unique_ptr<WebPAnimDecoder, WebpDeleter> m_decoder;
    std::vector<unsigned char> m_opaque;
};

using Container = std::unique_ptr<WebPDemuxer, WebpDeleter>;

Container containerOf(const Bytes& file, WebPDemuxState& state) {
    const WebPData data = {file.data, file.size};
    return Container(WebPDemuxPartial(&data, &state));
}

bool moves(const Container& container) {
    return (WebPDemuxGetI(container.get(), WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) != 0;
}

Bytes chunkOf(const Container& container, const char* name) {
    WebPChunkIterator chunk;
    Bytes bytes;
    if (WebPDemuxGetChunk(container.get(), name, 1, &chunk))
        bytes = {chunk.chunk.bytes, chunk.chunk.size};
    WebPDemuxReleaseChunkIterator(&chunk);
    return bytes;
}

/// A still picture, or the first one of an animation.
class WebpDecoder : public PictureDecoder {
public:
    explicit WebpDecoder(const Bytes& file) : m_file(file) {
        WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
        const Container container = containerOf(file, state);
        if (!container) refuseDamaged("its head cannot be understood");
        if (state != WEBP_DEMUX_DONE) refuseDamaged("the file ends too early");
        m_profile = chunkOf(container, "ICCP");
        m_camera = chunkOf(container, "EXIF");
        const std::size_t prefix = 6;  // some writers put what JPEG files have before the block
        if (m_camera.startsWith("Exif\0\0", prefix)) m_camera = m_camera.from(prefix);
        m_hasOthersBehind = WebPDemuxGetI(container.get(), WEBP_FF_FRAME_COUNT) > 1;
        if (moves(container)) {
            m_animation = std::make_unique<WebpAnimation>(file, *container);
            m_head = m_animation->head();
        } else {
            WebPBitstreamFeatures features;
            if (WebPGetFeatures(file.data, file.size, &features) != VP8_STATUS_OK)
                refuseDamaged("its head cannot be understood");
            m_head.width = features.width;
            m_head.height = features.height;
            m_head.channels = features.has_alpha ? 4 : 3;
            m_head.leastBytes =
                static_cast<double>(m_head.width) * m_head.height * m_head.channels / kMostPerByte;
        }
        m_head.orientation = orientationOf(m_camera);
    }

    void read(unsigned char* rows, std::size_t step) override {
        const auto height = static_cast<std::size_t>(m_head.height);
        const std::size_t rowBytes =
            static_cast<std::size_t>(m_head.width) * static_cast<std::size_t>(m_head.channels);
        if (m_animation) {
            const unsigned char* canvas = m_animation->next();
            m_animation->rewind();
            for (std::size_t y = 0; y < height; ++y)
                std::copy_n(canvas + y * rowBytes, rowBytes, rows + y * step);
            return;
        }
        const auto decode = m_head.channels == 4 ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
        if (!decode(m_file.data, m_file.size, rows, step * (height - 1) + rowBytes,
                    static_cast<int>(step)))
            refuseDamaged("its compressed pixels are wrong");
    }

    PictureProperties properties() override {
        PictureProperties result;
        result.iccProfile.assign(m_profile.data, m_profile.data + m_profile.size);
        result.cameraData = cameraDataOf(m_camera);
        result.hasPagesBehind = m_hasOthersBehind;
        return result;
    }

private:
    const Bytes m_file;
    Bytes m_profile;
    Bytes m_camera;
    std::unique_ptr<WebpAnimation> m_animation;
    bool m_hasOthersBehind = false;
};

std::unique_ptr<AnimationDecoder> openAnimation(const Bytes& file) {
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    const Container container = containerOf(file, state);
    // A damaged still picture says so when it is read.
    if (!container || !moves(container)) return nullptr;
    if (state != WEBP_DEMUX_DONE) refuseDamaged("frames of its animation are missing");
    if (WebPDemuxGetI(container.get(), WEBP_FF_FRAME_COUNT) < 2) return nullptr;
    return std::make_unique<WebpAnimation>(file, *container);
}

}  // namespace

Format webp() {
    return {"WebP",
            {".webp"},
            [](const Bytes& file) {
                return file.startsWith("RIFF", 4) && file.startsWith("WEBP", 4, 8);
            },
            [](const Bytes& file, int) -> std::unique_ptr<PictureDecoder> {
                return std::make_unique<WebpDecoder>(file);
            },
            nullptr,
            nullptr,
            0,
            0,
            openAnimation};
}

}  // namespace media::formats
