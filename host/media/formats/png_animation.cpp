#include "host/media/formats/png_animation.h"

#include <algorithm>
#include <cstring>

#include "host/media/formats/PngDecoder.h"

namespace media::formats {

namespace {

class PngAnimation : public AnimationDecoder {
public:
    explicit PngAnimation(const Bytes& file) : m_still(file) {
        forEachChunk(file, [this](const PngChunk& chunk) { takeChunk(chunk); });
        if (m_frames.size() != m_claimed) refuseDamaged("frames of its animation are missing");
        for (const Frame& frame : m_frames)
            if (frame.pixels.empty()) refuseDamaged("a frame of its animation has no pixels");
        describe();
    }

    const unsigned char* next() override {
        const auto canvasSize = static_cast<std::size_t>(m_head.width) *
                                static_cast<std::size_t>(m_head.height) *
                                static_cast<std::size_t>(m_head.channels);
        if (m_next == 0)
            m_canvas.assign(canvasSize, 0);
        else
            dispose(m_frames[m_next - 1]);
        const Frame& frame = m_frames[m_next];
        m_covered.clear();
        if (frame.dispose == Previous && m_next > 0)
            for (int y = 0; y < frame.height; ++y)
                m_covered.insert(m_covered.end(), row(frame, y), row(frame, y) + rowSize(frame));
        draw(frame);
        ++m_next;
        return m_canvas.data();
    }

    void rewind() override { m_next = 0; }

private:
    enum Dispose { Keep, Clear, Previous };
    struct Frame {
        int width, height, x, y;
        Dispose dispose;
        bool isBlended;
        std::size_t skipped;  ///< bytes of each chunk before its pixels
        std::vector<PngChunk> pixels;
    };

    void takeChunk(const PngChunk& chunk) {
        const Bytes contents = chunk.contents();
        if (chunk.is("acTL")) {
            chunk.requireWhole();
            m_claimed = number32(contents.part(0, 8).data);
        } else if (chunk.is("fcTL")) {
            chunk.requireWhole();
            requireNext(contents);
            takeFrame(contents.part(0, 26).data);
        } else if (chunk.is("IDAT")) {
            m_isStillPassed = true;
            if (!m_frames.empty()) m_frames.front().pixels.push_back(chunk);
        } else if (chunk.is("fdAT")) {
            requireNext(contents);
            if (m_frames.empty() || m_frames.back().skipped == 0)
                refuseDamaged("a frame of its animation has no head");
            m_frames.back().pixels.push_back(chunk);
        }
    }

    void requireNext(const Bytes& contents) {
        if (number32(contents.part(0, 4).data) != m_sequence++)
            refuseDamaged("the parts of its animation are not in order");
    }

    void takeFrame(const unsigned char* bytes) {
        const PictureHead& canvas = m_still.head();
        const auto inside = [](unsigned size, unsigned offset, int whole) {
            const auto most = static_cast<unsigned>(whole);
            return size >= 1 && size <= most && offset <= most - size;
        };
        const unsigned width = number32(bytes + 4), height = number32(bytes + 8);
        const unsigned x = number32(bytes + 12), y = number32(bytes + 16);
        const bool isStill = !m_isStillPassed;  // the still picture is the first frame
        const bool isCanvas = width == static_cast<unsigned>(canvas.width) &&
                              height == static_cast<unsigned>(canvas.height);
        if (!inside(width, x, canvas.width) || !inside(height, y, canvas.height) || bytes[24] > 2 ||
            bytes[25] > 1 || (isStill && (!isCanvas || !m_frames.empty())))
            refuseDamaged("a frame of its animation says what cannot be");
        const std::size_t skipped = isStill ? 0 : 4;
        m_frames.push_back({static_cast<int>(width),
                            static_cast<int>(height),
                            static_cast<int>(x),
                            static_cast<int>(y),
                            static_cast<Dispose>(bytes[24]),
                            bytes[25] == 1,
                            skipped,
                            {}});
        const int unit = bytes[22] << 8 | bytes[23];
        m_delays.push_back({bytes[20] << 8 | bytes[21], unit == 0 ? 100 : unit});
    }

    void describe() {
        m_head = m_still.head();
        m_stored = m_head.channels;
        m_isDeep = m_head.samples == SampleType::Word;
        m_head.samples = SampleType::Byte;
        if (m_isDeep) m_head.notes.push_back("16 bits cut to 8");
        if (m_stored % 2 == 1 && isSeenThrough()) ++m_head.channels;
    }

    /// Whether frames without alpha leave something open: nothing is drawn yet, or a frame left its
    /// place cleared, and the next one does not cover that.
    bool isSeenThrough() const {
        Frame open{};
        open.width = m_head.width;
        open.height = m_head.height;
        for (const Frame& frame : m_frames) {
            const bool covers = frame.x <= open.x && frame.y <= open.y &&
                                frame.x + frame.width >= open.x + open.width &&
                                frame.y + frame.height >= open.y + open.height;
            if (open.width > 0 && !covers) return true;
            if (frame.dispose == Keep) open.width = 0;
            if (frame.dispose == Clear)
                open = {frame.width, frame.height, frame.x, frame.y, Keep, false, 0, {}};
        }
        return false;
    }

    std::size_t rowSize(const Frame& frame) const {
        return static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(m_head.channels);
    }
    unsigned char* row(const Frame& frame, int y) {
        return m_canvas.data() +
               (static_cast<std::size_t>(frame.y + y) * static_cast<std::size_t>(m_head.width) +
                static_cast<std::size_t>(frame.x)) *
                   static_cast<std::size_t>(m_head.channels);
    }

    void dispose(const Frame& frame) {
        if (frame.dispose == Keep) return;
        const std::size_t size = rowSize(frame);
        for (int y = 0; y < frame.height; ++y)
            if (m_covered.empty())
                std::memset(row(frame, y), 0, size);
            else
                std::memcpy(row(frame, y), m_covered.data() + size * static_cast<std::size_t>(y),
                            size);
    }

    void draw(const Frame& frame) {
        PngDecoder decoder = m_still.part(frame.width, frame.height, frame.pixels, frame.skipped);
        std::size_t bytes = 0;
        for (const PngChunk& chunk : frame.pixels) bytes += chunk.named.size;
        if (decoder.head().leastBytes > static_cast<double>(bytes))
            refuseDamaged("a frame of its animation is too short for the pixels it claims");
        const std::size_t samples =
            static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(m_stored);
        const std::size_t step = samples * (m_isDeep ? 2 : 1);
        m_drawn.resize(step * static_cast<std::size_t>(frame.height));
        decoder.read(m_drawn.data(), step);
        for (int y = 0; y < frame.height; ++y) {
            unsigned char* drawn = m_drawn.data() + step * static_cast<std::size_t>(y);
            if (m_isDeep) cutToBytes(drawn, samples);
            drawRow(drawn, frame, row(frame, y));
        }
    }

    static void cutToBytes(unsigned char* samples, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            unsigned short deep;
            std::memcpy(&deep, samples + 2 * i, 2);
            samples[i] = static_cast<unsigned char>((deep + 128u) / 257);
        }
    }

    void drawRow(const unsigned char* in, const Frame& frame, unsigned char* out) const {
        const int channels = m_head.channels;
        const int colours = (channels - 1) / 2 * 2 + 1;
        for (int x = 0; x < frame.width; ++x, in += m_stored, out += channels) {
            const unsigned alpha = m_stored % 2 == 1 ? 255 : in[m_stored - 1];
            if (channels == colours || !frame.isBlended || alpha == 255) {
                std::copy_n(in, colours, out);
                if (channels > colours) out[colours] = static_cast<unsigned char>(alpha);
            } else if (alpha > 0) {
                blend(in, alpha, colours, out);
            }
        }
    }

    /// The operator "over" on colours that are not multiplied by alpha, rounded once.
    static void blend(const unsigned char* in, unsigned alpha, int colours, unsigned char* out) {
        const unsigned below = out[colours] * (255 - alpha);
        const unsigned whole = alpha * 255 + below;
        for (int c = 0; c < colours; ++c)
            out[c] = static_cast<unsigned char>((in[c] * alpha * 255 + out[c] * below + whole / 2) /
                                                whole);
        out[colours] = static_cast<unsigned char>((whole + 127) / 255);
    }

    const PngDecoder m_still;
    std::vector<Frame> m_frames;
    unsigned m_claimed = 0;
    unsigned m_sequence = 0;
    bool m_isStillPassed = false;
    int m_stored = 0;  // channels of a frame as it is decoded
    bool m_isDeep = false;
    std::size_t m_next = 0;
    std::vector<unsigned char> m_canvas;   // with the last picture
    std::vector<unsigned char> m_covered;  // what the last frame is to give back
    std::vector<unsigned char> m_drawn;
};

}  // namespace

std::unique_ptr<AnimationDecoder> openPngAnimation(const Bytes& file) {
    bool moves = false;
    try {
        forEachChunk(file, [&](const PngChunk& chunk) { moves = moves || chunk.isAnimation(); });
    } catch (const FormatError&) {
        if (!moves) return nullptr;  // a damaged still picture says so when it is read
    }
    return moves ? std::make_unique<PngAnimation>(file) : nullptr;
}

}  // namespace media::formats
