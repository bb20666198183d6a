#pragma once

#include <vector>

#include "host/media/formats/Format.h"

/// Reading PNG: the chunks of a file, and one picture in them.
namespace media::formats {

/// What the format's numbers mean.
namespace png_code {
constexpr std::size_t kSignatureSize = 8;
constexpr char kSignature[] = "\x89PNG\r\n\x1a\n";
enum ColourType { Grey = 0, Rgb = 2, Palette = 3, GreyAlpha = 4, RgbAlpha = 6 };
enum RowFilter { None, Sub, Up, Average, Paeth };
}  // namespace png_code

/// A number of four bytes, the highest first.
inline unsigned number32(const unsigned char* bytes) {
    return unsigned{bytes[0]} << 24 | unsigned{bytes[1]} << 16 | unsigned{bytes[2]} << 8 | bytes[3];
}

struct PngChunk {
    Bytes named;  ///< name and contents, side by side in the file
    unsigned crc;

    bool is(const char* name) const { return named.startsWith(name, 4); }
    Bytes contents() const { return {named.data + 4, named.size - 4}; }
    /// Throws FormatError when the checksum is not that of the bytes.
    void requireWhole() const;
    /// Whether it says that the file holds several pictures.
    bool isAnimation() const;
};

/// Hands out the chunks up to the one that ends the picture, itself included. Throws FormatError
/// when the file ends before.
template <typename Take>
void forEachChunk(const Bytes& file, Take take) {
    for (Bytes rest = file.from(png_code::kSignatureSize);;) {
        const std::size_t size = number32(rest.part(0, 8).data);
        rest.part(8, size);
        const PngChunk chunk = {rest.part(4, 4 + size), number32(rest.part(8 + size, 4).data)};
        take(chunk);
        if (chunk.is("IEND")) return;
        rest = rest.part(12 + size, rest.size - 12 - size);
    }
}

class PngDecoder : public PictureDecoder {
public:
    explicit PngDecoder(const Bytes& file);

    /// A picture of the same kind and another size, its pixels in the chunks given, each behind so
    /// many bytes of another use.
    PngDecoder part(int width, int height, const std::vector<PngChunk>& chunks,
                    std::size_t skipped) const;

    void read(unsigned char* rows, std::size_t step) override;
    PictureProperties properties() override;

private:
    /// One of the seven pictures of an interlaced file, or the whole of another.
    struct Pass {
        int x, y, dx, dy;
    };

    PngDecoder() = default;

    void takeChunk(const PngChunk& chunk);
    void takeHead(const Bytes& chunk);
    void describe();
    int storedChannels() const;

    std::vector<Pass> passes() const;
    int passWidth(const Pass& pass) const;
    int passHeight(const Pass& pass) const;
    std::size_t passRowSize(const Pass& pass) const;
    std::size_t passSize(const Pass& pass) const;

    /// The parts of the stream one behind the other.
    Bytes stream() const;

    /// Samples of a row as stored (unpacked, in the machine's order), spread over the pass's
    /// pixels.
    void expandRow(const unsigned char* in, const Pass& pass, unsigned char* row) const;
    unsigned storedSample(const unsigned char* in, int index) const;
    template <typename Sample>
    void putPixel(const unsigned* sample, Sample* out, unsigned opaque) const;

    std::vector<PngChunk> m_chunks;
    std::vector<Bytes> m_pixels;
    Bytes m_palette, m_transparency, m_resolution, m_profile, m_camera;
    int m_bits = 0;
    int m_colourType = 0;
    bool m_interlaced = false;
    bool m_hasPicturesBehind = false;
};

}  // namespace media::formats
