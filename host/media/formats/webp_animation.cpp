// The pictures of an animated WebP file, composited by the format's own library.

#include <webp/demux.h>

#include <algorithm>
#include <new>

#include "host/media/formats/Format.h"

namespace media::formats {

namespace {

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
        constexpr double kMostPerByte = 100000;  // pictures of one colour take almost nothing
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

}  // namespace

std::unique_ptr<AnimationDecoder> openWebpAnimation(const Bytes& file) {
    const WebPData data = {file.data, file.size};
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    const std::unique_ptr<WebPDemuxer, WebpDeleter> container(WebPDemuxPartial(&data, &state));
    const bool moves =
        container && (WebPDemuxGetI(container.get(), WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) != 0;
    if (!moves) return nullptr;  // a damaged still picture says so when it is read
    if (state != WEBP_DEMUX_DONE) refuseDamaged("frames of its animation are missing");
    if (WebPDemuxGetI(container.get(), WEBP_FF_FRAME_COUNT) < 2) return nullptr;
    return std::make_unique<WebpAnimation>(file, *container);
}

}  // namespace media::formats
