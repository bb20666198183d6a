#include "host/media/formats/TiffDecoder.h"

#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstring>

#include "host/media/formats/camera_data.h"
#include "host/media/formats/deflate.h"

namespace media::formats {

namespace {

/// What libtiff reads from.
struct MemoryFile {
    Bytes bytes;
    std::uint64_t at = 0;
};

tmsize_t readMemory(thandle_t handle, void* out, tmsize_t size) {
    auto& file = *static_cast<MemoryFile*>(handle);
    if (size < 0 || file.at >= file.bytes.size) return 0;
    const std::size_t count =
        std::min<std::size_t>(static_cast<std::size_t>(size), file.bytes.size - file.at);
    std::memcpy(out, file.bytes.data + file.at, count);
    file.at += count;
    return static_cast<tmsize_t>(count);
}
tmsize_t writeNothing(thandle_t, void*, tmsize_t) {
    return -1;
}
toff_t seekMemory(thandle_t handle, toff_t offset, int from) {
    auto& file = *static_cast<MemoryFile*>(handle);
    file.at = offset + (from == SEEK_CUR ? file.at : from == SEEK_END ? file.bytes.size : 0);
    return file.at;
}
int closeNothing(thandle_t) {
    return 0;
}
toff_t sizeOfMemory(thandle_t handle) {
    return static_cast<MemoryFile*>(handle)->bytes.size;
}
int mapMemory(thandle_t handle, void** base, toff_t* size) {
    const Bytes& bytes = static_cast<MemoryFile*>(handle)->bytes;
    *base = const_cast<unsigned char*>(bytes.data);  // opened for reading only
    *size = bytes.size;
    return 1;
}
void unmapNothing(thandle_t, void*, toff_t) {}

/// Errors are noticed by what a call returns; the library's words go nowhere.
int swallow(TIFF*, void*, const char*, const char*, std::va_list) {
    return 1;
}

/// A file opened at one of its pages.
class OpenTiff {
public:
    explicit OpenTiff(const Bytes& file) : m_file{file} {
        TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
        if (!options) throw std::bad_alloc();
        TIFFOpenOptionsSetErrorHandlerExtR(options, swallow, nullptr);
        TIFFOpenOptionsSetWarningHandlerExtR(options, swallow, nullptr);
        m_tiff = TIFFClientOpenExt("picture", "r", &m_file, readMemory, writeNothing, seekMemory,
                                   closeNothing, sizeOfMemory, mapMemory, unmapNothing, options);
        TIFFOpenOptionsFree(options);
        if (!m_tiff) refuseDamaged("its head cannot be understood");
    }
    OpenTiff(const OpenTiff&) = delete;
    OpenTiff& operator=(const OpenTiff&) = delete;
    ~OpenTiff() { TIFFClose(m_tiff); }
    operator TIFF*() const { return m_tiff; }

    /// A tag's value, with TIFF's default where it has one.
    template <typename Value>
    Value get(unsigned tag, Value otherwise) const {
        Value value = otherwise;
        return TIFFGetFieldDefaulted(m_tiff, tag, &value) == 1 ? value : otherwise;
    }

private:
    MemoryFile m_file;
    TIFF* m_tiff;
};

/// How many bytes a compressed one can give.
double mostPerByte(int compression) {
    switch (compression) {
        case COMPRESSION_NONE:
            return 1;
        case COMPRESSION_PACKBITS:
            return 64;
        case COMPRESSION_LZW:
            return 2731;  // 4096 bytes from a code of 12 bits
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
            return kDeflateRatio;
        default:
            return 1e5;
    }
}

class TiffDecoder : public PictureDecoder {
public:
    TiffDecoder(const Bytes& file, int page) : m_bytes(file), m_tiff(file) {
        if (page > 0 && !TIFFSetDirectory(m_tiff, static_cast<tdir_t>(page)))
            refuseDamaged("page " + std::to_string(page + 1) + " cannot be found");
        const auto width = m_tiff.get<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
        const auto height = m_tiff.get<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
        if (width < 1 || height < 1 || width > 0x7fffffff || height > 0x7fffffff)
            refuseDamaged("its size cannot be");
        m_head.width = static_cast<int>(width);
        m_head.height = static_cast<int>(height);
        m_stored = m_tiff.get<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
        m_bits = m_tiff.get<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
        m_format = m_tiff.get<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
        m_compression = m_tiff.get<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        m_isPlanar = m_tiff.get<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) ==
                     PLANARCONFIG_SEPARATE;
        m_photometric = m_tiff.get<std::uint16_t>(
            TIFFTAG_PHOTOMETRIC, m_stored >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
        m_head.orientation =
            std::clamp<int>(m_tiff.get<std::uint16_t>(TIFFTAG_ORIENTATION, 1), 1, 8);
        describe();
        m_head.leastBytes = static_cast<double>(width) * height * m_stored * m_bits / 8 /
                            mostPerByte(m_compression);
    }

    void read(unsigned char* rows, std::size_t step) override {
        if (m_photometric == PHOTOMETRIC_PALETTE) takePalette();
        const bool isTiled = TIFFIsTiled(m_tiff);
        const auto tileWidth =
            static_cast<int>(isTiled ? m_tiff.get<std::uint32_t>(TIFFTAG_TILEWIDTH, 0)
                                     : static_cast<std::uint32_t>(m_head.width));
        const int tileHeight = static_cast<int>(std::min<std::uint32_t>(
            isTiled ? m_tiff.get<std::uint32_t>(TIFFTAG_TILELENGTH, 0)
                    : m_tiff.get<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, 0xffffffffu),
            isTiled ? 1u << 20 : static_cast<std::uint32_t>(m_head.height)));
        const tmsize_t blockSize = isTiled ? TIFFTileSize(m_tiff) : TIFFStripSize(m_tiff);
        const std::size_t rowSize =
            static_cast<std::size_t>(isTiled ? TIFFTileRowSize(m_tiff) : TIFFScanlineSize(m_tiff));
        if (tileWidth < 1 || tileHeight < 1 || blockSize < 1 || rowSize < 1 ||
            static_cast<std::size_t>(blockSize) < rowSize * static_cast<std::size_t>(tileHeight))
            refuseDamaged("its strips cannot be");
        if (static_cast<double>(blockSize) / (mostPerByte(m_compression) + 64) >
            static_cast<double>(m_bytes.size))
            refuseDamaged("the file is too short for the size it claims");
        // Rows as they will be: decoded where they belong.
        const bool isPlain = !m_isPlanar && !isTiled && m_bits == 8 && !m_isInk &&
                             m_photometric != PHOTOMETRIC_PALETTE &&
                             m_photometric != PHOTOMETRIC_MINISWHITE &&
                             m_stored == m_head.channels && step == rowSize;
        thread_local Scratch scratch;
        unsigned char* block =
            isPlain ? nullptr : scratch.atLeast(static_cast<std::size_t>(blockSize));
        const int planes = m_isPlanar ? std::min(m_stored, m_isInk ? 4 : m_head.channels) : 1;
        for (int plane = 0; plane < planes; ++plane)
            for (int y = 0; y < m_head.height; y += tileHeight)
                for (int x = 0; x < m_head.width; x += tileWidth) {
                    const int height = std::min(tileHeight, m_head.height - y);
                    unsigned char* out = rows + step * static_cast<std::size_t>(y);
                    unsigned char* in = isPlain ? out : block;
                    const auto wanted =
                        isTiled ? blockSize : static_cast<tmsize_t>(rowSize) * height;
                    readBlock(isTiled, x, y, plane, in, wanted, static_cast<std::size_t>(blockSize),
                              rowSize);
                    if (isPlain) continue;
                    const int width = std::min(tileWidth, m_head.width - x);
                    for (int k = 0; k < height; ++k)
                        convertRow(in + rowSize * static_cast<std::size_t>(k), x, width, plane,
                                   out + step * static_cast<std::size_t>(k));
                }
    }

    PictureProperties properties() override {
        PictureProperties result;
        result.xResolution = m_tiff.get<float>(TIFFTAG_XRESOLUTION, 0);
        result.yResolution = m_tiff.get<float>(TIFFTAG_YRESOLUTION, 0);
        const auto unit = m_tiff.get<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        result.resolutionUnit = unit == RESUNIT_INCH         ? "in"
                                : unit == RESUNIT_CENTIMETER ? "cm"
                                                             : "";
        std::uint32_t size = 0;
        const unsigned char* profile = nullptr;
        if (TIFFGetField(m_tiff, TIFFTAG_ICCPROFILE, &size, &profile) == 1 && profile)
            result.iccProfile.assign(profile, profile + size);
        result.hasPagesBehind = TIFFLastDirectory(m_tiff) == 0;
        if (TIFFCurrentDirectory(m_tiff) == 0) result.cameraData = cameraDataOf(m_bytes);
        return result;
    }

private:
    void describe() {
        if (m_photometric == PHOTOMETRIC_YCBCR && m_compression == COMPRESSION_JPEG) {
            TIFFSetField(m_tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            m_photometric = PHOTOMETRIC_RGB;
        }
        m_isInk = m_photometric == PHOTOMETRIC_SEPARATED;
        const bool isKnown = m_photometric == PHOTOMETRIC_MINISBLACK ||
                             m_photometric == PHOTOMETRIC_MINISWHITE ||
                             m_photometric == PHOTOMETRIC_RGB ||
                             m_photometric == PHOTOMETRIC_PALETTE || (m_isInk && m_stored >= 4);
        if (!isKnown) refuseKind("photometric " + std::to_string(m_photometric));
        const bool isFloat = m_format == SAMPLEFORMAT_IEEEFP;
        const bool isWhole = m_format == SAMPLEFORMAT_UINT || m_format == SAMPLEFORMAT_VOID;
        const bool bitsKnown = isFloat   ? m_bits == 32 || m_bits == 64
                               : isWhole ? m_bits == 1 || m_bits == 2 || m_bits == 4 ||
                                               m_bits == 8 || m_bits == 16 || m_bits == 32
                                         : false;
        if (!bitsKnown || ((m_isInk || m_photometric == PHOTOMETRIC_PALETTE) && m_bits > 8))
            refuseKind(std::to_string(m_bits) + " bits a sample" +
                       (isFloat ? ", floating point" : "") +
                       (!isFloat && !isWhole ? ", with a sign" : ""));
        if (m_stored < 1 || (m_photometric == PHOTOMETRIC_RGB && m_stored < 3))
            refuseDamaged("its channels cannot be");
        m_head.samples = m_bits <= 8    ? SampleType::Byte
                         : m_bits == 16 ? SampleType::Word
                                        : SampleType::Float;

        std::uint16_t extraCount = 0;
        const std::uint16_t* extras = nullptr;
        if (TIFFGetField(m_tiff, TIFFTAG_EXTRASAMPLES, &extraCount, &extras) != 1) extraCount = 0;
        const int colours =
            m_photometric == PHOTOMETRIC_PALETTE || m_isInk || m_photometric == PHOTOMETRIC_RGB ? 3
                                                                                                : 1;
        const int storedColours = m_isInk ? 4 : m_photometric == PHOTOMETRIC_PALETTE ? 1 : colours;
        if (m_isInk) {
            m_head.channels = 3;
            m_head.notes.push_back("CMYK became RGB without its colour profile");
        } else if (m_photometric == PHOTOMETRIC_PALETTE) {
            m_head.channels = 3;
        } else {
            // A sample behind the colours is alpha when the file says so or says nothing.
            const bool hasAlpha = m_stored > colours &&
                                  (extraCount == 0 || extras[0] == EXTRASAMPLE_ASSOCALPHA ||
                                   extras[0] == EXTRASAMPLE_UNASSALPHA || m_stored == colours + 1);
            // Two or more planes of measurements, not colours.
            m_head.channels = colours + (hasAlpha ? 1 : 0);
            m_head.isPremultiplied =
                hasAlpha && extraCount > 0 && extras[0] == EXTRASAMPLE_ASSOCALPHA;
        }
        const int used =
            m_isInk || m_photometric == PHOTOMETRIC_PALETTE ? storedColours : m_head.channels;
        if (m_stored > used)
            m_head.notes.push_back("only the first " + std::to_string(used) + " of " +
                                   std::to_string(m_stored) + " channels are read");
    }

    /// libtiff does not look at the checksum of deflated pixels in every case: these are taken from
    /// the file here. False when there is more to undo than the usual predictor.
    bool inflateBlock(std::uint32_t index, unsigned char* out, std::size_t wanted,
                      std::size_t blockSize, std::size_t rowSize) {
        const auto predictor = m_tiff.get<std::uint16_t>(TIFFTAG_PREDICTOR, 1);
        const auto order = m_tiff.get<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
        const bool isDeflated =
            m_compression == COMPRESSION_DEFLATE || m_compression == COMPRESSION_ADOBE_DEFLATE;
        if (!isDeflated || order != FILLORDER_MSB2LSB) return false;
        const Bytes stream =
            m_bytes.part(TIFFGetStrileOffset(m_tiff, index), TIFFGetStrileByteCount(m_tiff, index));
        const bool isOurs = m_bits <= 8 && (predictor == 1 || (predictor == 2 && m_bits == 8));
        thread_local Scratch scratch;
        unsigned char* pixels = isOurs ? out : scratch.atLeast(wanted);
        try {
            inflateExactly(stream, pixels, wanted);
        } catch (const FormatError&) {
            // Some writers fill up the last strip.
            const std::vector<unsigned char> all = inflateUpTo(stream, blockSize);
            if (all.size() != blockSize) throw;
            std::memcpy(pixels, all.data(), wanted);
        }
        if (!isOurs || predictor == 1) return isOurs;
        const auto pixel = static_cast<std::size_t>(m_isPlanar ? 1 : m_stored);
        for (std::size_t row = 0; row + rowSize <= wanted; row += rowSize)
            for (std::size_t i = row + pixel; i < row + rowSize; ++i)
                out[i] = static_cast<unsigned char>(out[i] + out[i - pixel]);
        return true;
    }

    void readBlock(bool isTiled, int x, int y, int plane, unsigned char* out, tmsize_t wanted,
                   std::size_t blockSize, std::size_t rowSize) {
        const auto sample = static_cast<std::uint16_t>(m_isPlanar ? plane : 0);
        const auto column = static_cast<std::uint32_t>(x);
        const auto row = static_cast<std::uint32_t>(y);
        const std::uint32_t index = isTiled ? TIFFComputeTile(m_tiff, column, row, 0, sample)
                                            : TIFFComputeStrip(m_tiff, row, sample);
        if (inflateBlock(index, out, static_cast<std::size_t>(wanted), blockSize, rowSize)) return;
        const tmsize_t got = isTiled ? TIFFReadEncodedTile(m_tiff, index, out, wanted)
                                     : TIFFReadEncodedStrip(m_tiff, index, out, wanted);
        if (got != wanted) refuseDamaged("its compressed pixels are wrong");
    }

    void takePalette() {
        std::uint16_t* table[3] = {};
        if (m_stored != 1 ||
            TIFFGetField(m_tiff, TIFFTAG_COLORMAP, &table[0], &table[1], &table[2]) != 1)
            refuseDamaged("its palette is missing");
        const std::size_t size = std::size_t{1} << m_bits;
        // Some writers fill the 16 bits of a colour only with 8.
        bool isShort = true;
        for (int c = 0; c < 3; ++c)
            for (std::size_t i = 0; i < size; ++i) isShort = isShort && table[c][i] < 256;
        for (std::size_t i = 0; i < size; ++i)
            for (int c = 0; c < 3; ++c)
                m_palette.push_back(
                    static_cast<unsigned char>(isShort ? table[c][i] : table[c][i] >> 8));
    }

    unsigned sampleAt(const unsigned char* in, std::size_t index) const {
        if (m_bits == 8) return in[index];
        const std::size_t perByte = 8u / static_cast<unsigned>(m_bits);
        const std::size_t shift = 8 - static_cast<unsigned>(m_bits) * (index % perByte + 1);
        return in[index / perByte] >> shift & ((1u << m_bits) - 1);
    }

    /// Width pixels of a block's row into the picture's row, from column x on.
    void convertRow(const unsigned char* in, int x, int width, int plane,
                    unsigned char* row) const {
        const auto stored = static_cast<std::size_t>(m_isPlanar ? 1 : m_stored);
        const auto channels = static_cast<std::size_t>(m_head.channels);
        const std::size_t firstChannel = m_isPlanar ? static_cast<std::size_t>(plane) : 0;
        const std::size_t taken = m_isPlanar ? 1 : std::min(stored, channels);
        const auto at = static_cast<std::size_t>(x) * channels;
        if (m_isInk && m_isPlanar) refuseKind("CMYK in separate planes");
        if (m_head.samples == SampleType::Byte) {
            const unsigned most = (1u << m_bits) - 1;
            const bool isInverted = m_photometric == PHOTOMETRIC_MINISWHITE;
            unsigned char* out = row + at;
            for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i, out += channels) {
                if (m_photometric == PHOTOMETRIC_PALETTE) {
                    std::memcpy(out, &m_palette[3 * sampleAt(in, i)], 3);
                } else if (m_isInk) {
                    const unsigned black = 255 - sampleAt(in, i * stored + 3) * 255 / most;
                    for (std::size_t c = 0; c < 3; ++c)
                        out[c] = static_cast<unsigned char>(
                            ((255 - sampleAt(in, i * stored + c) * 255 / most) * black + 127) /
                            255);
                } else {
                    for (std::size_t c = 0; c < taken; ++c) {
                        const unsigned value = sampleAt(in, i * stored + c) * 255 / most;
                        out[firstChannel + c] =
                            static_cast<unsigned char>(isInverted && c == 0 ? 255 - value : value);
                    }
                }
            }
            return;
        }
        const bool isInverted = m_photometric == PHOTOMETRIC_MINISWHITE;
        if (m_head.samples == SampleType::Word) {
            auto* out = reinterpret_cast<std::uint16_t*>(row) + at;
            const auto* samples = reinterpret_cast<const std::uint16_t*>(in);
            for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i, out += channels)
                for (std::size_t c = 0; c < taken; ++c) {
                    const std::uint16_t value = samples[i * stored + c];
                    out[firstChannel + c] =
                        isInverted && c == 0 ? static_cast<std::uint16_t>(65535 - value) : value;
                }
            return;
        }
        auto* out = reinterpret_cast<float*>(row) + at;
        for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i, out += channels)
            for (std::size_t c = 0; c < taken; ++c) {
                const std::size_t k = i * stored + c;
                float value =
                    m_format != SAMPLEFORMAT_IEEEFP
                        ? static_cast<float>(reinterpret_cast<const std::uint32_t*>(in)[k] /
                                             4294967295.0)
                    : m_bits == 64 ? static_cast<float>(reinterpret_cast<const double*>(in)[k])
                                   : reinterpret_cast<const float*>(in)[k];
                out[firstChannel + c] = isInverted && c == 0 ? 1 - value : value;
            }
    }

    Bytes m_bytes;
    OpenTiff m_tiff;
    int m_stored = 0;  ///< samples of a pixel in the file
    int m_bits = 0;
    int m_format = 0;
    int m_compression = 0;
    int m_photometric = 0;
    bool m_isPlanar = false;
    bool m_isInk = false;
    std::vector<unsigned char> m_palette;  ///< RGB triples
};

}  // namespace

std::unique_ptr<PictureDecoder> openTiff(const Bytes& file, int page) {
    return std::make_unique<TiffDecoder>(file, page);
}

int tiffPageCount(const Bytes& file) {
    return static_cast<int>(TIFFNumberOfDirectories(OpenTiff(file)));
}

}  // namespace media::formats
