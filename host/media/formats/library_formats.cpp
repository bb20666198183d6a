// The formats that OpenImageIO reads and writes, each by its reader's name.

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <cstring>

#include "host/kernel/HeapWatch.h"
#include "host/media/formats/Format.h"

namespace media::formats {

namespace {

/// Frames are read and written side by side, one thread each; a pool of threads inside the library
/// would only compete with them. It knows this setting for the whole process only.
void keepToOwnThread() {
    [[maybe_unused]] static const bool done = OIIO::attribute("threads", 1);
}

unsigned little(const Bytes& file, std::size_t at, std::size_t bytes) {
    const Bytes part = file.part(at, bytes);
    unsigned value = 0;
    for (std::size_t i = bytes; i-- > 0;) value = value << 8 | part.data[i];
    return value;
}

/// What a file can hold of the pixels it claims, by kind of compression.
constexpr double kStored = 8;  // of one bit each
constexpr double kRuns = 128;
constexpr double kAnything = 100000;

constexpr char kBmp[] = "bmp";
constexpr char kTarga[] = "targa";
constexpr char kPnm[] = "pnm";
constexpr char kWebp[] = "webp";
constexpr char kExr[] = "openexr";

/// Some of the readers give what lay in memory where a part of the file is too short. It is zero.
class LibraryDecoder : public PictureDecoder {
public:
    LibraryDecoder(const char* reader, const Bytes& file, double mostPerByte)
        : m_memory(file.data, file.size), m_animates(!std::strcmp(reader, kWebp)) {
        keepToOwnThread();
        const ZeroedHeap zeroed;
        m_input = OIIO::ImageInput::create(reader);
        OIIO::ImageSpec options;
        options.attribute("oiio:UnassociatedAlpha", 1);
        if (!m_input || !m_input->supports("ioproxy") || !m_input->set_ioproxy(&m_memory) ||
            !m_input->open(std::string("frame.") + reader, m_layout, options)) {
            forgetReason();
            refuseDamaged("its head cannot be understood");
        }
        // What one file holds of several is pictures of an animation, or parts of one picture.
        if (!m_animates && hasPart(1))
            m_head.notes.push_back("only the first of several parts is read");
        m_head.width = m_layout.width;
        m_head.height = m_layout.height;
        // Up to four, of more the colours and an alpha that stands right behind them.
        m_head.channels = m_layout.nchannels <= 4       ? m_layout.nchannels
                          : m_layout.alpha_channel == 3 ? 4
                                                        : 3;
        if (m_layout.nchannels > m_head.channels)
            m_head.notes.push_back("only the first " + std::to_string(m_head.channels) + " of " +
                                   std::to_string(m_layout.nchannels) + " channels are read");
        m_head.samples = m_layout.format == OIIO::TypeUInt8    ? SampleType::Byte
                         : m_layout.format == OIIO::TypeUInt16 ? SampleType::Word
                                                               : SampleType::Float;
        m_head.orientation = m_layout.get_int_attribute("Orientation", 1);
        if (m_head.orientation < 1 || m_head.orientation > 8) m_head.orientation = 1;
        // These two give colours multiplied by alpha although we asked for the contrary.
        const bool hasAlpha = m_head.channels == 2 || m_head.channels == 4;
        const bool multiplies = !std::strcmp(reader, kExr) || m_animates;
        m_head.isPremultiplied = hasAlpha && multiplies;
        if (m_head.isPremultiplied) m_head.samples = SampleType::Float;
        m_head.leastBytes = static_cast<double>(m_layout.width) * m_layout.height *
                            m_layout.nchannels / mostPerByte;
    }

    void read(unsigned char* rows, std::size_t step) override {
        const ZeroedHeap zeroed;
        const OIIO::TypeDesc type = m_head.samples == SampleType::Byte   ? OIIO::TypeUInt8
                                    : m_head.samples == SampleType::Word ? OIIO::TypeUInt16
                                                                         : OIIO::TypeFloat;
        const auto pixel = static_cast<OIIO::stride_t>(bytesOf(m_head.samples)) * m_head.channels;
        if (!m_input->read_image(0, 0, 0, m_head.channels, type, rows, pixel,
                                 static_cast<OIIO::stride_t>(step)) ||
            m_input->has_error()) {
            forgetReason();
            refuseDamaged("its pixels are not all there");
        }
    }

    PictureProperties properties() override {
        PictureProperties result;
        result.xResolution = m_layout.get_float_attribute("XResolution");
        result.yResolution = m_layout.get_float_attribute("YResolution");
        const std::string unit = m_layout.get_string_attribute("ResolutionUnit");
        result.resolutionUnit = unit == "in" || unit == "inch" ? "in" : unit == "cm" ? "cm" : "";
        if (const OIIO::ParamValue* profile = m_layout.find_attribute("ICCProfile")) {
            const auto* bytes = static_cast<const unsigned char*>(profile->data());
            result.iccProfile.assign(bytes, bytes + profile->type().size());
        }
        result.hasPagesBehind = m_animates && hasPart(1);
        return result;
    }

private:
    bool hasPart(int number) {
        const bool found = m_input->seek_subimage(number, 0);
        if (!found) forgetReason();
        return found;
    }

    /// The library's words are not ours, and it prints those nobody fetched.
    void forgetReason() {
        if (m_input) m_input->geterror();
        OIIO::geterror();
    }

    OIIO::Filesystem::IOMemReader m_memory;
    const bool m_animates;
    OIIO::ImageSpec m_layout;
    std::unique_ptr<OIIO::ImageInput> m_input;
};

template <const char* kWriter>
void encode(const PictureRows& rows, const PictureProperties& properties, const WriteOptions&,
            const std::string& suffix, std::vector<unsigned char>& file) {
    keepToOwnThread();
    OIIO::ImageSpec head(rows.width, rows.height, rows.channels, OIIO::TypeUInt8);
    head.attribute("oiio:UnassociatedAlpha", 1);
    head.attribute("DateTime", "");  // else files would carry the time and never be the same
    if (properties.xResolution > 0 && properties.yResolution > 0) {
        head.attribute("XResolution", static_cast<float>(properties.xResolution));
        head.attribute("YResolution", static_cast<float>(properties.yResolution));
        head.attribute("ResolutionUnit",
                       properties.resolutionUnit.empty() ? "none" : properties.resolutionUnit);
    }
    OIIO::Filesystem::IOVecOutput memory(file);
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(kWriter);
    const bool done = output && output->set_ioproxy(&memory) &&
                      output->open("frame" + suffix, head) &&
                      output->write_image(OIIO::TypeUInt8, rows.data, rows.channels, rows.step) &&
                      output->close();
    if (done) return;
    if (output) output->geterror();
    OIIO::geterror();
    throw FormatError(MediaErrorKind::ReadWrite, "the picture cannot be encoded; use .png or .tif");
}

template <const char* kReader, const double& kMostPerByte>
std::unique_ptr<PictureDecoder> open(const Bytes& file, int) {
    return std::make_unique<LibraryDecoder>(kReader, file, kMostPerByte);
}

/// Kinds of BMP whose reader is sound.
std::unique_ptr<PictureDecoder> openBmp(const Bytes& file, int) {
    const unsigned headSize = little(file, 14, 4);
    if (headSize < 40) refuseKind("an old BMP head");
    const unsigned bits = little(file, 28, 2);
    const unsigned compression = little(file, 30, 4);
    const bool isPlain = compression == 0 && (bits == 8 || bits == 24 || bits == 32);
    const bool hasMasks = compression == 3 && bits == 32;
    if (!isPlain && !hasMasks)
        refuseKind(std::to_string(bits) + " bits, compression " + std::to_string(compression));
    const unsigned colours = little(file, 46, 4);
    if (bits == 8 && colours != 0 && colours != 256)
        refuseKind("a palette of " + std::to_string(colours));
    file.part(little(file, 10, 4), 1);
    return std::make_unique<LibraryDecoder>(kBmp, file, 4);
}

bool isTarga(const Bytes& file) {
    if (file.size < 18) return false;
    const unsigned char* head = file.data;
    const int type = head[2] & ~8;
    const int bits = head[16];
    const bool isPalette = head[1] == 1 && type == 1 && bits == 8;
    const bool isColour =
        head[1] == 0 && type == 2 && (bits == 15 || bits == 16 || bits == 24 || bits == 32);
    const bool isGrey = head[1] == 0 && type == 3 && (bits == 8 || bits == 16);
    return (head[2] & ~0xb) == 0 && (isPalette || isColour || isGrey) && (head[17] & 0xc0) == 0;
}

std::unique_ptr<PictureDecoder> openTarga(const Bytes& file, int) {
    // The reader does not ask whether a pixel's number is in the colour map.
    if (file.data[1] == 1 &&
        (little(file, 3, 2) != 0 || little(file, 5, 2) < 256 || file.data[7] != 24))
        refuseKind("a colour map that is not 256 colours of 24 bits");
    return std::make_unique<LibraryDecoder>(kTarga, file, kRuns * 4);
}

}  // namespace

std::vector<Format> libraryFormats() {
    static constexpr unsigned kGreyOrColour = 0b0101;
    static constexpr unsigned kNotGreyAlpha = 0b1101;
    const auto isPnm = [](const Bytes& file) {
        return file.size > 2 && file.data[0] == 'P' && file.data[1] >= '1' && file.data[1] <= '6' &&
               std::strchr(" \t\r\n#", file.data[2]) && file.data[2];
    };
    const auto isBmp = [](const Bytes& file) { return file.startsWith("BM", 2); };
    const auto isWebp = [](const Bytes& file) {
        return file.startsWith("RIFF", 4) && file.startsWith("WEBP", 4, 8);
    };
    const auto isExr = [](const Bytes& file) { return file.startsWith("\x76\x2f\x31\x01", 4); };
    return {
        {"BMP", {".bmp"}, isBmp, openBmp, nullptr, encode<kBmp>, kNotGreyAlpha, 32768},
        {"PNM", {".pnm"}, isPnm, open<kPnm, kStored>, nullptr, encode<kPnm>, kGreyOrColour, 32768},
        {"PNM", {".ppm"}, isPnm, open<kPnm, kStored>, nullptr, encode<kPnm>, 0b0100, 32768},
        {"PNM", {".pgm"}, isPnm, open<kPnm, kStored>, nullptr, encode<kPnm>, 0b0001, 32768},
        {"PNM", {".pbm"}, isPnm, open<kPnm, kStored>, nullptr, nullptr, 0, 0},
        {"WebP",
         {".webp"},
         isWebp,
         open<kWebp, kAnything>,
         nullptr,
         nullptr,
         0,
         0,
         openWebpAnimation},
        {"OpenEXR", {".exr"}, isExr, open<kExr, kAnything>, nullptr, nullptr, 0, 0},
        // Last: it has nothing at its beginning to know it by.
        {"TGA", {".tga"}, isTarga, openTarga, nullptr, encode<kTarga>, kNotGreyAlpha, 32768},
    };
}

}  // namespace media::formats
