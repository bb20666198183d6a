#include "host/media/formats/PngDecoder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "host/media/formats/camera_data.h"
#include "host/media/formats/deflate.h"

namespace media::formats {

using namespace png_code;

namespace {

constexpr std::size_t kLargestProfile = std::size_t{1} << 24;

unsigned char paeth(int left, int up, int corner) {
    const int toLeft = std::abs(up - corner);
    const int toUp = std::abs(left - corner);
    const int toCorner = std::abs(left + up - 2 * corner);
    const int other = toUp <= toCorner ? up : corner;
    return static_cast<unsigned char>(toLeft <= toUp && toLeft <= toCorner ? left : other);
}

/// Adds to each byte what its neighbours predict: those to the left, above and above that to the
/// left, which are 0 outside. They are kept in registers, since a load of what was just stored
/// waits for it.
template <int kPixel, typename Predict>
void addPrediction(const unsigned char* in, const unsigned char* up, unsigned char* out,
                   std::size_t size, Predict predict) {
    int left[kPixel] = {}, corner[kPixel] = {};
    for (std::size_t i = 0; i < size; i += kPixel)
        for (std::size_t c = 0; c < kPixel; ++c) {
            const int above = up[i + c];
            out[i + c] = static_cast<unsigned char>(in[i + c] + predict(left[c], above, corner[c]));
            left[c] = out[i + c];
            corner[c] = above;
        }
}

/// Undoes a row's filter: in and out may be the same bytes; up is the row above as it came out.
template <int kPixel>
void unfilterRow(int filter, const unsigned char* in, const unsigned char* up, unsigned char* out,
                 std::size_t size) {
    switch (filter) {
        case None:
            if (in != out) std::memcpy(out, in, size);
            return;
        case Sub:
            return addPrediction<kPixel>(in, up, out, size,
                                         [](int left, int, int) { return left; });
        case Up:
            for (std::size_t i = 0; i < size; ++i)
                out[i] = static_cast<unsigned char>(in[i] + up[i]);
            return;
        case Average:
            return addPrediction<kPixel>(
                in, up, out, size, [](int left, int above, int) { return (left + above) / 2; });
        case Paeth:
            return addPrediction<kPixel>(in, up, out, size, paeth);
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

}  // namespace

void PngChunk::requireWhole() const {
    if (crc32Of(named) != crc) refuseDamaged("a checksum is wrong");
}

bool PngChunk::isAnimation() const {
    return is("acTL") && named.size == 12 && number32(contents().data) > 1;
}

PngDecoder::PngDecoder(const Bytes& file) {
    forEachChunk(file, [this](const PngChunk& chunk) { takeChunk(chunk); });
    if (m_pixels.empty()) refuseDamaged("it has no pixels");
    if (m_colourType == Palette && m_palette.size == 0) refuseDamaged("its palette is missing");
    describe();
}

PngDecoder PngDecoder::part(int width, int height, const std::vector<PngChunk>& chunks,
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
    for (const PngChunk& chunk : chunks) {
        const Bytes contents = chunk.contents();
        result.m_pixels.push_back(contents.part(skipped, contents.size - skipped));
    }
    result.describe();
    return result;
}

void PngDecoder::read(unsigned char* rows, std::size_t step) {
    for (const PngChunk& chunk : m_chunks) chunk.requireWhole();
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
                expandRow(out, pass, rows + step * static_cast<std::size_t>(pass.y + y * pass.dy));
        }
    }
}

PictureProperties PngDecoder::properties() {
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
    const void* nameEnd = m_profile.size ? std::memchr(m_profile.data, 0, m_profile.size) : nullptr;
    if (nameEnd) {
        const std::size_t name =
            static_cast<std::size_t>(static_cast<const unsigned char*>(nameEnd) - m_profile.data);
        if (m_profile.size > name + 2)
            result.iccProfile = inflateUpTo(m_profile.from(name + 2), kLargestProfile);
    }
    result.cameraData = cameraDataOf(m_camera);
    result.hasPagesBehind = m_hasPicturesBehind;
    return result;
}

void PngDecoder::takeChunk(const PngChunk& chunk) {
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
    m_hasPicturesBehind = m_hasPicturesBehind || chunk.isAnimation();
}

void PngDecoder::takeHead(const Bytes& chunk) {
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

void PngDecoder::describe() {
    const int colours = m_colourType == Palette ? 3 : storedChannels();
    m_head.channels = colours + (m_transparency.size ? 1 : 0);
    m_head.samples = m_bits == 16 ? SampleType::Word : SampleType::Byte;
    m_head.orientation = orientationOf(m_camera);
    const double bits = static_cast<double>(m_head.width) * storedChannels() * m_bits;
    m_head.leastBytes = (bits / 8 + 1) * m_head.height / kDeflateRatio;
}

int PngDecoder::storedChannels() const {
    return m_colourType == Rgb         ? 3
           : m_colourType == RgbAlpha  ? 4
           : m_colourType == GreyAlpha ? 2
                                       : 1;
}

std::vector<PngDecoder::Pass> PngDecoder::passes() const {
    if (!m_interlaced) return {{0, 0, 1, 1}};
    return {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
            {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
}

int PngDecoder::passWidth(const Pass& pass) const {
    return (m_head.width - pass.x + pass.dx - 1) / pass.dx;
}

int PngDecoder::passHeight(const Pass& pass) const {
    return (m_head.height - pass.y + pass.dy - 1) / pass.dy;
}

std::size_t PngDecoder::passRowSize(const Pass& pass) const {
    const int width = std::max(0, passWidth(pass));
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(storedChannels() * m_bits) +
            7) /
           8;
}

std::size_t PngDecoder::passSize(const Pass& pass) const {
    const std::size_t row = passRowSize(pass);
    return row == 0 ? 0 : (row + 1) * static_cast<std::size_t>(std::max(0, passHeight(pass)));
}

Bytes PngDecoder::stream() const {
    if (m_pixels.size() == 1) return m_pixels.front();
    std::size_t whole = 0;
    for (const Bytes& part : m_pixels) whole += part.size;
    thread_local Scratch scratch;
    unsigned char* joined = scratch.atLeast(whole);
    std::size_t size = 0;
    for (const Bytes& part : m_pixels) {
        std::memcpy(joined + size, part.data, part.size);
        size += part.size;
    }
    return {joined, size};
}

void PngDecoder::expandRow(const unsigned char* in, const Pass& pass, unsigned char* row) const {
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

unsigned PngDecoder::storedSample(const unsigned char* in, int index) const {
    if (m_bits == 8) return in[index];
    if (m_bits == 16) return unsigned{in[2 * index]} << 8 | in[2 * index + 1];
    const int perByte = 8 / m_bits;
    const int shift = 8 - m_bits * (index % perByte + 1);
    return in[index / perByte] >> shift & ((1u << m_bits) - 1);
}

template <typename Sample>
void PngDecoder::putPixel(const unsigned* sample, Sample* out, unsigned opaque) const {
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

}  // namespace media::formats
