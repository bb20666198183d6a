// PNG on libdeflate. A reader and a writer of our own, because the pixels' stream is most of the
// work and the PNG libraries leave it to zlib, which takes three times as long.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "host/media/formats/Format.h"
#include "host/media/formats/camera_data.h"
#include "host/media/formats/deflate.h"

namespace media::formats {

namespace {

constexpr std::size_t kSignatureSize = 8;
const char kSignature[] = "\x89PNG\r\n\x1a\n";
enum ColourType { Grey = 0, Rgb = 2, Palette = 3, GreyAlpha = 4, RgbAlpha = 6 };
enum RowFilter { None, Sub, Up, Average, Paeth };
constexpr std::size_t kLargestProfile = std::size_t{1} << 24;

unsigned number32(const unsigned char* bytes) {
    return unsigned{bytes[0]} << 24 | unsigned{bytes[1]} << 16 | unsigned{bytes[2]} << 8 | bytes[3];
}

unsigned char paeth(int left, int up, int corner) {
    const int toLeft = std::abs(up - corner);
    const int toUp = std::abs(left - corner);
    const int toCorner = std::abs(left + up - 2 * corner);
    const int other = toUp <= toCorner ? up : corner;
    return static_cast<unsigned char>(toLeft <= toUp && toLeft <= toCorner ? left : other);
}

/// Undoes a row's filter: in and out may be the same bytes; up is the row above as it came out.
template <int kPixel>
void unfilterRow(int filter, const unsigned char* in, const unsigned char* up, unsigned char* out,
                 std::size_t size) {
    const auto byte = [](int value) { return static_cast<unsigned char>(value); };
    const std::size_t first = std::min<std::size_t>(kPixel, size);
    switch (filter) {
        case None:
            if (in != out) std::memcpy(out, in, size);
            return;
        case Sub:
            for (std::size_t i = 0; i < first; ++i) out[i] = in[i];
            for (std::size_t i = first; i < size; ++i) out[i] = byte(in[i] + out[i - kPixel]);
            return;
        case Up:
            for (std::size_t i = 0; i < size; ++i) out[i] = byte(in[i] + up[i]);
            return;
        case Average:
            for (std::size_t i = 0; i < first; ++i) out[i] = byte(in[i] + up[i] / 2);
            for (std::size_t i = first; i < size; ++i)
                out[i] = byte(in[i] + (out[i - kPixel] + up[i]) / 2);
            return;
        case Paeth:
            for (std::size_t i = 0; i < first; ++i) out[i] = byte(in[i] + up[i]);
            for (std::size_t i = first; i < size; ++i)
                out[i] = byte(in[i] + paeth(out[i - kPixel], up[i], up[i - kPixel]));
            return;
        default:
            refuseDamaged("a row's filter is unknown");
    }
}

using Unfilter = void (*)(int, const unsigned char*, const unsigned char*, unsigned char*,
                          std::size_t);

Unfilter unfilterFor(int pixelBytes) {
    switch (pixelBytes) {
        case 1:
            return unfilterRow<1>;
        case 2:
            return unfilterRow<2>;
        case 3:
            return unfilterRow<3>;
        case 4:
            return unfilterRow<4>;
        case 6:
            return unfilterRow<6>;
        default:
            return unfilterRow<8>;
    }
}

/// One of the seven pictures of an interlaced file, or the whole of another.
struct Pass {
    int x, y, dx, dy;
};
constexpr Pass kWhole[] = {{0, 0, 1, 1}};
constexpr Pass kInterlaced[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};

struct Chunk {
    Bytes named;  ///< name and contents, side by side in the file
    unsigned crc;

    bool is(const char* name) const { return named.startsWith(name, 4); }
    Bytes contents() const { return {named.data + 4, named.size - 4}; }
    void requireWhole() const {
        if (crc32Of(named) != crc) refuseDamaged("a checksum is wrong");
    }
};

bool isAnimation(const Chunk& chunk) {
    return chunk.is("acTL") && chunk.named.size == 12 && number32(chunk.contents().data) > 1;
}

/// Hands out the chunks up to the one that ends the picture, itself included.
template <typename Take>
void forEachChunk(const Bytes& file, Take take) {
    for (Bytes rest = file.from(kSignatureSize);;) {
        const std::size_t size = number32(rest.part(0, 8).data);
        rest.part(8, size);
        const Chunk chunk = {rest.part(4, 4 + size), number32(rest.part(8 + size, 4).data)};
        take(chunk);
        if (chunk.is("IEND")) return;
        rest = rest.part(12 + size, rest.size - 12 - size);
    }
}

class PngDecoder : public PictureDecoder {
public:
    explicit PngDecoder(const Bytes& file) {
        forEachChunk(file, [this](const Chunk& chunk) { takeChunk(chunk); });
        if (m_pixels.empty()) refuseDamaged("it has no pixels");
        if (m_colourType == Palette && m_palette.size == 0) refuseDamaged("its palette is missing");
        describe();
    }

    /// A picture of the same kind and another size, its pixels in the chunks given, each behind so
    /// many bytes of another use.
    PngDecoder part(int width, int height, const std::vector<Chunk>& chunks,
                    std::size_t skipped) const {
        PngDecoder result;
        result.m_palette = m_palette;
        result.m_transparency = m_transparency;
        result.m_bits = m_bits;
        result.m_colourType = m_colourType;
        result.m_interlaced = m_interlaced;
        result.m_head.width = width;
        result.m_head.height = height;
        result.m_chunks = chunks;
        for (const Chunk& chunk : chunks) {
            const Bytes contents = chunk.contents();
            result.m_pixels.push_back(contents.part(skipped, contents.size - skipped));
        }
        result.describe();
        return result;
    }

    void read(unsigned char* rows, std::size_t step) override {
        for (const Chunk& chunk : m_chunks) chunk.requireWhole();
        std::size_t rawSize = 0;
        for (const Pass& pass : passes()) rawSize += passSize(pass);
        thread_local Scratch scratch;
        unsigned char* raw = scratch.atLeast(rawSize);
        inflateExactly(stream(), raw, rawSize);

        const bool isPlain =
            m_bits == 8 && !m_interlaced && m_colourType != Palette && m_transparency.size == 0;
        const Unfilter unfilter = unfilterFor(std::max(1, m_bits * storedChannels() / 8));
        for (const Pass& pass : passes()) {
            const int height = passHeight(pass);
            const std::size_t rowSize = passRowSize(pass);
            if (rowSize == 0) continue;
            const std::vector<unsigned char> nothing(rowSize);
            const unsigned char* up = nothing.data();
            for (int y = 0; y < height; ++y, raw += rowSize + 1) {
                unsigned char* out = isPlain ? rows + step * static_cast<std::size_t>(y) : raw + 1;
                unfilter(raw[0], raw + 1, up, out, rowSize);
                up = out;
                if (!isPlain)
                    expandRow(out, pass,
                              rows + step * static_cast<std::size_t>(pass.y + y * pass.dy));
            }
        }
    }

    PictureProperties properties() override {
        PictureProperties result;
        if (m_resolution.size == 9) {
            const double perUnit = m_resolution.data[8] == 1 ? 0.01 : 1;
            result.xResolution = number32(m_resolution.data) * perUnit;
            result.yResolution = number32(m_resolution.data + 4) * perUnit;
            if (m_resolution.data[8] == 1) {
                // Stored per metre; people write inches, and these come back whole.
                result.resolutionUnit = "in";
                result.xResolution = std::round(result.xResolution * 254) / 100;
                result.yResolution = std::round(result.yResolution * 254) / 100;
            }
        }
        const void* nameEnd =
            m_profile.size ? std::memchr(m_profile.data, 0, m_profile.size) : nullptr;
        if (nameEnd) {
            const std::size_t name = static_cast<std::size_t>(
                static_cast<const unsigned char*>(nameEnd) - m_profile.data);
            if (m_profile.size > name + 2)
                result.iccProfile = inflateUpTo(m_profile.from(name + 2), kLargestProfile);
        }
        result.cameraData = cameraDataOf(m_camera);
        result.hasPagesBehind = m_hasPicturesBehind;
        return result;
    }

private:
    PngDecoder() = default;

    void takeChunk(const Chunk& chunk) {
        m_chunks.push_back(chunk);
        const Bytes contents = chunk.contents();
        const bool isFirst = m_chunks.size() == 1;
        if (isFirst != chunk.is("IHDR")) refuseDamaged("its head is not where it belongs");
        if (isFirst) return takeHead(contents);
        if (chunk.is("IDAT")) m_pixels.push_back(contents);
        if (chunk.is("PLTE")) m_palette = contents;
        if (chunk.is("tRNS") &&
            (m_colourType == Grey || m_colourType == Rgb || m_colourType == Palette))
            m_transparency = contents;
        if (chunk.is("pHYs")) m_resolution = contents;
        if (chunk.is("iCCP")) m_profile = contents;
        if (chunk.is("eXIf")) m_camera = contents;
        m_hasPicturesBehind = m_hasPicturesBehind || isAnimation(chunk);
    }

    void takeHead(const Bytes& chunk) {
        if (chunk.size != 13) refuseDamaged("its head has a wrong length");
        m_chunks.front().requireWhole();
        const unsigned width = number32(chunk.data);
        const unsigned height = number32(chunk.data + 4);
        m_bits = chunk.data[8];
        m_colourType = chunk.data[9];
        m_interlaced = chunk.data[12] == 1;
        const bool isDeep = m_bits == 8 || m_bits == 16;
        const bool isShallow = m_bits == 1 || m_bits == 2 || m_bits == 4;
        const bool isPossible = m_colourType == Grey ? isDeep || isShallow
                                : m_colourType == Palette
                                    ? m_bits == 8 || isShallow
                                    : isDeep && (m_colourType == Rgb || m_colourType == GreyAlpha ||
                                                 m_colourType == RgbAlpha);
        if (width < 1 || height < 1 || width > 0x7fffffff || height > 0x7fffffff || !isPossible ||
            chunk.data[10] != 0 || chunk.data[11] != 0 || chunk.data[12] > 1)
            refuseDamaged("its head says what cannot be");
        m_head.width = static_cast<int>(width);
        m_head.height = static_cast<int>(height);
    }

    void describe() {
        const int colours = m_colourType == Palette ? 3 : storedChannels();
        m_head.channels = colours + (m_transparency.size ? 1 : 0);
        m_head.samples = m_bits == 16 ? SampleType::Word : SampleType::Byte;
        m_head.orientation = orientationOf(m_camera);
        const double bits = static_cast<double>(m_head.width) * storedChannels() * m_bits;
        m_head.leastBytes = (bits / 8 + 1) * m_head.height / kDeflateRatio;
    }

    int storedChannels() const {
        return m_colourType == Rgb         ? 3
               : m_colourType == RgbAlpha  ? 4
               : m_colourType == GreyAlpha ? 2
                                           : 1;
    }

    std::vector<Pass> passes() const {
        return m_interlaced ? std::vector<Pass>(std::begin(kInterlaced), std::end(kInterlaced))
                            : std::vector<Pass>(std::begin(kWhole), std::end(kWhole));
    }
    int passWidth(const Pass& pass) const {
        return (m_head.width - pass.x + pass.dx - 1) / pass.dx;
    }
    int passHeight(const Pass& pass) const {
        return (m_head.height - pass.y + pass.dy - 1) / pass.dy;
    }
    std::size_t passRowSize(const Pass& pass) const {
        const int width = std::max(0, passWidth(pass));
        return (static_cast<std::size_t>(width) *
                    static_cast<std::size_t>(storedChannels() * m_bits) +
                7) /
               8;
    }
    std::size_t passSize(const Pass& pass) const {
        const std::size_t row = passRowSize(pass);
        return row == 0 ? 0 : (row + 1) * static_cast<std::size_t>(std::max(0, passHeight(pass)));
    }

    std::size_t streamSize() const {
        std::size_t size = 0;
        for (const Bytes& part : m_pixels) size += part.size;
        return size;
    }
    /// The parts of the stream one behind the other.
    Bytes stream() const {
        if (m_pixels.size() == 1) return m_pixels.front();
        thread_local Scratch scratch;
        unsigned char* joined = scratch.atLeast(streamSize());
        std::size_t size = 0;
        for (const Bytes& part : m_pixels) {
            std::memcpy(joined + size, part.data, part.size);
            size += part.size;
        }
        return {joined, size};
    }

    /// Samples of a row as stored (unpacked, in the machine's order), spread over the pass's
    /// pixels.
    void expandRow(const unsigned char* in, const Pass& pass, unsigned char* row) const {
        const int stored = storedChannels();
        const int width = passWidth(pass);
        unsigned sample[4] = {};
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < stored; ++c) sample[c] = storedSample(in, x * stored + c);
            const int column = pass.x + x * pass.dx;
            if (m_bits == 16)
                putPixel(sample,
                         reinterpret_cast<unsigned short*>(row) +
                             static_cast<std::ptrdiff_t>(column) * m_head.channels,
                         65535);
            else
                putPixel(sample, row + static_cast<std::ptrdiff_t>(column) * m_head.channels, 255);
        }
    }

    unsigned storedSample(const unsigned char* in, int index) const {
        if (m_bits == 8) return in[index];
        if (m_bits == 16) return unsigned{in[2 * index]} << 8 | in[2 * index + 1];
        const int perByte = 8 / m_bits;
        const int shift = 8 - m_bits * (index % perByte + 1);
        return in[index / perByte] >> shift & ((1u << m_bits) - 1);
    }

    template <typename Sample>
    void putPixel(const unsigned* sample, Sample* out, unsigned opaque) const {
        const int colours = m_head.channels - (m_transparency.size ? 1 : 0);
        if (m_colourType == Palette) {
            if (sample[0] * 3 + 3 > m_palette.size) refuseDamaged("a pixel is not of its palette");
            for (int c = 0; c < 3; ++c)
                out[c] = m_palette.data[sample[0] * 3 + static_cast<unsigned>(c)];
            if (m_transparency.size)
                out[3] = sample[0] < m_transparency.size ? m_transparency.data[sample[0]] : 255;
            return;
        }
        const unsigned scale = m_bits < 8 ? 255 / ((1u << m_bits) - 1) : 1;
        bool isTransparent = m_transparency.size >= static_cast<std::size_t>(2 * colours);
        for (int c = 0; c < colours; ++c) {
            out[c] = static_cast<Sample>(sample[c] * scale);
            if (isTransparent)
                isTransparent = sample[c] == (unsigned{m_transparency.data[2 * c]} << 8 |
                                              m_transparency.data[2 * c + 1]);
        }
        if (m_transparency.size) out[colours] = static_cast<Sample>(isTransparent ? 0 : opaque);
    }

    std::vector<Chunk> m_chunks;
    std::vector<Bytes> m_pixels;
    Bytes m_palette, m_transparency, m_resolution, m_profile, m_camera;
    int m_bits = 0;
    int m_colourType = 0;
    bool m_interlaced = false;
    bool m_hasPicturesBehind = false;
};

/// Composites the frames of an animated PNG as the W3C's PNG, third edition, says.
class PngAnimation : public AnimationDecoder {
public:
    explicit PngAnimation(const Bytes& file) : m_still(file) {
        forEachChunk(file, [this](const Chunk& chunk) { takeChunk(chunk); });
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
        std::vector<Chunk> pixels;
    };

    void takeChunk(const Chunk& chunk) {
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
        for (const Chunk& chunk : frame.pixels) bytes += chunk.named.size;
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

std::unique_ptr<AnimationDecoder> openAnimation(const Bytes& file) {
    bool moves = false;
    try {
        forEachChunk(file, [&](const Chunk& chunk) { moves = moves || isAnimation(chunk); });
    } catch (const FormatError&) {
        if (!moves) return nullptr;  // a damaged still picture says so when it is read
    }
    return moves ? std::make_unique<PngAnimation>(file) : nullptr;
}

void put32(unsigned value, std::vector<unsigned char>& out) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<unsigned char>(value >> shift));
}

/// Appends a chunk whose contents the function appends.
template <typename Contents>
void putChunk(const char* name, std::vector<unsigned char>& out, Contents contents) {
    const std::size_t begin = out.size();
    put32(0, out);
    out.insert(out.end(), name, name + 4);
    contents();
    const unsigned size = static_cast<unsigned>(out.size() - begin - 8);
    for (std::size_t i = 0; i < 4; ++i)
        out[begin + i] = static_cast<unsigned char>(size >> (24 - 8 * i));
    put32(crc32Of({out.data() + begin + 4, out.size() - begin - 4}), out);
}

void filterRow(int filter, const unsigned char* row, const unsigned char* up, std::size_t pixel,
               unsigned char* out, std::size_t size) {
    const auto byte = [](int value) { return static_cast<unsigned char>(value); };
    const std::size_t first = std::min(pixel, size);
    switch (filter) {
        case Sub:
            std::memcpy(out, row, first);
            for (std::size_t i = first; i < size; ++i) out[i] = byte(row[i] - row[i - pixel]);
            return;
        case Up:
            for (std::size_t i = 0; i < size; ++i) out[i] = byte(row[i] - up[i]);
            return;
        case Average:
            for (std::size_t i = 0; i < first; ++i) out[i] = byte(row[i] - up[i] / 2);
            for (std::size_t i = first; i < size; ++i)
                out[i] = byte(row[i] - (row[i - pixel] + up[i]) / 2);
            return;
        default:
            std::memcpy(out, row, size);
    }
}

/// Small differences compress well: the usual measure, the sum of their sizes.
unsigned long cost(const unsigned char* filtered, std::size_t size) {
    unsigned long sum = 0;
    for (std::size_t i = 0; i < size; ++i)
        sum += static_cast<unsigned>(std::abs(static_cast<signed char>(filtered[i])));
    return sum;
}

/// The rows, each behind the number of its filter. One filter for sixteen rows, the best one for
/// the first of them: as small as choosing for each row within 1 %, for little time. Paeth's is
/// left out: three times the time of the others together, and no smaller with pictures that were
/// filtered.
Bytes filtered(const PictureRows& rows, Scratch& scratch) {
    constexpr int kRowsOfOneFilter = 16;
    const std::size_t size = rows.rowBytes();
    const auto pixel = static_cast<std::size_t>(rows.channels);
    unsigned char* const begin =
        scratch.atLeast((size + 1) * static_cast<std::size_t>(rows.height));
    const std::vector<unsigned char> nothing(size);
    unsigned char* out = begin;
    int filter = None;
    for (int y = 0; y < rows.height; ++y, out += size + 1) {
        const unsigned char* up = y > 0 ? rows.row(y - 1) : nothing.data();
        // Row 0 has nothing above it and says nothing about the others.
        if (y % kRowsOfOneFilter == 1 || y == 0) {
            unsigned long least = 0;
            for (int candidate : {None, Sub, Up, Average}) {
                filterRow(candidate, rows.row(y), up, pixel, out + 1, size);
                const unsigned long price = cost(out + 1, size);
                if (candidate == None || price < least) {
                    least = price;
                    filter = candidate;
                }
            }
        }
        out[0] = static_cast<unsigned char>(filter);
        filterRow(filter, rows.row(y), up, pixel, out + 1, size);
    }
    return {begin, static_cast<std::size_t>(out - begin)};
}

void encodePng(const PictureRows& rows, const PictureProperties& properties,
               const WriteOptions& options, const std::string&, std::vector<unsigned char>& file) {
    file.insert(file.end(), kSignature, kSignature + kSignatureSize);
    putChunk("IHDR", file, [&] {
        constexpr unsigned char colourTypes[] = {Grey, GreyAlpha, Rgb, RgbAlpha};
        put32(static_cast<unsigned>(rows.width), file);
        put32(static_cast<unsigned>(rows.height), file);
        file.insert(file.end(), {8, colourTypes[rows.channels - 1], 0, 0, 0});
    });
    if (!properties.iccProfile.empty())
        putChunk("iCCP", file, [&] {
            const std::string name("profile\0", 8);
            file.insert(file.end(), name.begin(), name.end());
            file.push_back(0);
            deflateTo({properties.iccProfile.data(), properties.iccProfile.size()},
                      options.compression, file);
        });
    if (properties.xResolution > 0 && properties.yResolution > 0)
        putChunk("pHYs", file, [&] {
            const bool hasUnit = !properties.resolutionUnit.empty();
            const double perMetre = properties.resolutionUnit == "in" ? 100 / 2.54
                                    : hasUnit                         ? 100
                                                                      : 1;
            const auto stored = [&](double value) {
                return static_cast<unsigned>(std::min(std::round(value * perMetre), 2147483647.0));
            };
            put32(stored(properties.xResolution), file);
            put32(stored(properties.yResolution), file);
            file.push_back(hasUnit ? 1 : 0);
        });
    const std::vector<unsigned char> camera = asExif(properties.cameraData);
    if (!camera.empty())
        putChunk("eXIf", file, [&] { file.insert(file.end(), camera.begin(), camera.end()); });
    putChunk("IDAT", file, [&] {
        thread_local Scratch scratch;
        deflateTo(filtered(rows, scratch), options.compression, file);
    });
    putChunk("IEND", file, [] {});
}

}  // namespace

std::vector<Format> png() {
    Format still = {"PNG",
                    {".png"},
                    [](const Bytes& file) { return file.startsWith(kSignature, kSignatureSize); },
                    [](const Bytes& file, int) -> std::unique_ptr<PictureDecoder> {
                        return std::make_unique<PngDecoder>(file);
                    },
                    nullptr,
                    encodePng,
                    0b1111,
                    32768,
                    openAnimation};
    Format animated = still;
    animated.suffixes = {".apng"};
    animated.encode = nullptr;  // stills have the other suffix
    return {still, animated};
}

}  // namespace media::formats
