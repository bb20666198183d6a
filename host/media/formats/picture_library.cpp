// The part of the program that uses OpenImageIO, a shared library of its own.

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <cstring>

#include "host/kernel/HeapWatch.h"
#include "host/media/formats/picture_library.h"

namespace media::formats {

namespace {

/// Frames are read and written side by side, one thread each; a pool of threads inside the library
/// would only compete with them. It knows this setting for the whole process only.
void keepToOwnThread() {
    [[maybe_unused]] static const bool done = OIIO::attribute("threads", 1);
}

/// Some of the readers give what lay in memory where a part of the file is too short. It is zero.
class LibraryDecoder : public PictureDecoder {
public:
    LibraryDecoder(const char* reader, const Bytes& file, double mostPerByte)
        : m_memory(file.data, file.size) {
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
        if (hasPart(1)) m_head.notes.push_back("only the first of several parts is read");
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
        // OpenEXR's colours are multiplied by alpha although we asked for the contrary.
        const bool hasAlpha = m_head.channels == 2 || m_head.channels == 4;
        m_head.isPremultiplied = hasAlpha && !std::strcmp(reader, "openexr");
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
    OIIO::ImageSpec m_layout;
    std::unique_ptr<OIIO::ImageInput> m_input;
};

void encode(const char* writer, const PictureRows& rows, const PictureProperties& properties,
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
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(writer);
    const bool done = output && output->set_ioproxy(&memory) &&
                      output->open("frame" + suffix, head) &&
                      output->write_image(OIIO::TypeUInt8, rows.data, rows.channels, rows.step) &&
                      output->close();
    if (done) return;
    if (output) output->geterror();
    OIIO::geterror();
    throw FormatError(MediaErrorKind::ReadWrite, "the picture cannot be encoded; use .png or .tif");
}

std::unique_ptr<PictureDecoder> open(const char* reader, const Bytes& file, double mostPerByte) {
    return std::make_unique<LibraryDecoder>(reader, file, mostPerByte);
}

}  // namespace

}  // namespace media::formats

extern "C" __attribute__((visibility("default")))
const media::formats::PictureLibrary fxPictureLibrary = {media::formats::open,
                                                         media::formats::encode};
