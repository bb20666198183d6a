// JPEG by libjpeg-turbo. What stands around the pixels (resolution, profile, camera data) is taken
// from and put into the file's segments here.

#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>

#include "host/media/formats/Format.h"
#include "host/media/formats/camera_data.h"
#include "host/media/formats/deflate.h"

namespace media::formats {

namespace {

enum Marker {
    StartOfImage = 0xd8,
    EndOfImage = 0xd9,
    StartOfScan = 0xda,
    App0 = 0xe0,
    App1 = 0xe1,
    App2 = 0xe2
};
constexpr std::size_t kLargestSegment = 65533;
const char kJfif[] = "JFIF";            // with the zero at its end
const char kExif[] = "Exif\0";          // with two
const char kProfile[] = "ICC_PROFILE";  // with one

/// Where the eye stops seeing a difference while files stay small.
constexpr int kQuality = 92;
/// A progressive file may ask for the whole picture to be gone through again and again.
constexpr int kFlags = TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS;

class Handle {
public:
    explicit Handle(tjhandle handle) : m_handle(handle) {
        if (!handle) throw std::bad_alloc();
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { tjDestroy(m_handle); }
    operator tjhandle() const { return m_handle; }

private:
    tjhandle m_handle;
};

class JpegDecoder : public PictureDecoder {
public:
    explicit JpegDecoder(const Bytes& file) : m_file(file) {
        int colourSpace = 0;
        if (tjDecompressHeader3(m_handle, file.data, static_cast<unsigned long>(file.size),
                                &m_head.width, &m_head.height, &m_subsampling, &colourSpace) != 0)
            refuseDamaged("its head cannot be understood");
        m_isInk = colourSpace == TJCS_CMYK || colourSpace == TJCS_YCCK;
        m_head.channels = colourSpace == TJCS_GRAY ? 1 : 3;
        if (m_isInk) m_head.notes.push_back("CMYK became RGB without its colour profile");
        // A block of 64 pixels takes a bit at the least.
        m_head.leastBytes = static_cast<double>(m_head.width) * m_head.height / 512;
        takeSegments();
        m_head.orientation = orientationOf(m_exif);
    }

    void read(unsigned char* rows, std::size_t step) override {
        if (!m_isInk) return decode(m_head.channels == 1 ? TJPF_GRAY : TJPF_RGB, rows, step);
        thread_local Scratch scratch;
        const std::size_t inkStep = static_cast<std::size_t>(m_head.width) * 4;
        unsigned char* inks = scratch.atLeast(inkStep * static_cast<std::size_t>(m_head.height));
        decode(TJPF_CMYK, inks, inkStep);
        for (int y = 0; y < m_head.height; ++y) {
            const unsigned char* in = inks + inkStep * static_cast<std::size_t>(y);
            unsigned char* out = rows + step * static_cast<std::size_t>(y);
            // Stored inverted: 255 is no ink.
            for (int x = 0; x < m_head.width; ++x, in += 4)
                for (int c = 0; c < 3; ++c)
                    *out++ = static_cast<unsigned char>((in[c] * in[3] + 127) / 255);
        }
    }

    PictureProperties properties() override {
        PictureProperties result;
        result.chromaSubsampling = m_subsampling == TJSAMP_420   ? ChromaSubsampling::Both
                                   : m_subsampling == TJSAMP_422 ? ChromaSubsampling::Horizontal
                                                                 : ChromaSubsampling::None;
        if (m_jfif.size >= 7) {
            const unsigned char* density = m_jfif.data + 2;
            result.resolutionUnit = density[0] == 1 ? "in" : density[0] == 2 ? "cm" : "";
            result.xResolution = density[1] << 8 | density[2];
            result.yResolution = density[3] << 8 | density[4];
            if (density[0] == 0 && result.xResolution == result.yResolution)
                result.xResolution = result.yResolution = 0;  // only says: square pixels
        }
        // Parts of a profile are numbered from 1.
        for (const auto& [number, part] : m_profile)
            result.iccProfile.insert(result.iccProfile.end(), part.data, part.data + part.size);
        result.cameraData = cameraDataOf(m_exif);
        return result;
    }

private:
    void decode(int pixelFormat, unsigned char* rows, std::size_t step) const {
        if (tjDecompress2(m_handle, m_file.data, static_cast<unsigned long>(m_file.size), rows,
                          m_head.width, static_cast<int>(step), m_head.height, pixelFormat,
                          kFlags) != 0)
            refuseDamaged("its compressed pixels are wrong");
    }

    void takeSegments() {
        Bytes rest = m_file.from(2);
        while (rest.size >= 4 && rest.data[0] == 0xff) {
            const int marker = rest.data[1];
            if (marker == 0xff) {
                rest = rest.from(1);
                continue;
            }
            if (marker == StartOfScan || marker == EndOfImage) return;
            const std::size_t size = std::size_t{rest.data[2]} << 8 | rest.data[3];
            if (size < 2 || rest.size < 2 + size) return;
            takeSegment(marker, rest.part(4, size - 2));
            rest = rest.from(2 + size);
        }
    }

    void takeSegment(int marker, const Bytes& segment) {
        if (marker == App0 && segment.startsWith(kJfif, sizeof kJfif))
            m_jfif = segment.from(sizeof kJfif);
        if (marker == App1 && segment.startsWith(kExif, sizeof kExif))
            m_exif = segment.from(sizeof kExif);
        if (marker == App2 && segment.size > sizeof kProfile + 2 &&
            segment.startsWith(kProfile, sizeof kProfile))
            m_profile[segment.data[sizeof kProfile]] = segment.from(sizeof kProfile + 2);
    }

    const Handle m_handle{tjInitDecompress()};  // one that has failed stays in a state of its own
    Bytes m_file;
    Bytes m_jfif, m_exif;
    std::map<int, Bytes> m_profile;
    int m_subsampling = 0;
    bool m_isInk = false;
};

void putSegment(int marker, const char* name, std::size_t nameSize, const Bytes& contents,
                std::vector<unsigned char>& file) {
    const std::size_t size = 2 + nameSize + contents.size;
    file.insert(file.end(),
                {0xff, static_cast<unsigned char>(marker), static_cast<unsigned char>(size >> 8),
                 static_cast<unsigned char>(size)});
    file.insert(file.end(), name, name + nameSize);
    file.insert(file.end(), contents.data, contents.data + contents.size);
}

void putSegments(const PictureProperties& properties, std::vector<unsigned char>& file) {
    const auto stored = [](double value) {
        return static_cast<unsigned>(std::clamp(std::round(value), 0.0, 65535.0));
    };
    // A density of 0 is none.
    const bool isKnown = properties.xResolution >= 0.5 && properties.yResolution >= 0.5;
    const unsigned x = isKnown ? stored(properties.xResolution) : 1;
    const unsigned y = isKnown ? stored(properties.yResolution) : 1;
    const int unit = !isKnown                            ? 0
                     : properties.resolutionUnit == "in" ? 1
                     : properties.resolutionUnit == "cm" ? 2
                                                         : 0;
    const auto byte = [](unsigned value) { return static_cast<unsigned char>(value); };
    const unsigned char jfif[] = {
        1, 1, byte(static_cast<unsigned>(unit)), byte(x >> 8), byte(x), byte(y >> 8), byte(y),
        0, 0};
    putSegment(App0, kJfif, sizeof kJfif, {jfif, sizeof jfif}, file);

    const std::vector<unsigned char> exif = asExif(properties.cameraData);
    if (!exif.empty() && exif.size() + sizeof kExif <= kLargestSegment)
        putSegment(App1, kExif, sizeof kExif, {exif.data(), exif.size()}, file);

    const std::vector<unsigned char>& profile = properties.iccProfile;
    const std::size_t most = kLargestSegment - sizeof kProfile - 2;
    const std::size_t parts = (profile.size() + most - 1) / most;
    if (parts > 255) return;
    for (std::size_t i = 0; i < parts; ++i) {
        std::string name(kProfile, sizeof kProfile);
        name += static_cast<char>(i + 1);
        name += static_cast<char>(parts);
        const Bytes part{profile.data() + i * most, std::min(most, profile.size() - i * most)};
        putSegment(App2, name.data(), name.size(), part, file);
    }
}

void encodeJpeg(const PictureRows& rows, const PictureProperties& properties, const WriteOptions&,
                const std::string&, std::vector<unsigned char>& file) {
    const int subsampling = rows.channels == 1                                        ? TJSAMP_GRAY
                            : properties.chromaSubsampling == ChromaSubsampling::Both ? TJSAMP_420
                            : properties.chromaSubsampling == ChromaSubsampling::Horizontal
                                ? TJSAMP_422
                                : TJSAMP_444;
    thread_local Scratch scratch;
    unsigned long size = tjBufSize(rows.width, rows.height, subsampling);
    unsigned char* stream = scratch.atLeast(size);
    if (tjCompress2(Handle(tjInitCompress()), rows.data, rows.width, static_cast<int>(rows.step),
                    rows.height, rows.channels == 1 ? TJPF_GRAY : TJPF_RGB, &stream, &size,
                    subsampling, kQuality, TJFLAG_NOREALLOC | TJFLAG_ACCURATEDCT) != 0)
        throw FormatError(MediaErrorKind::ReadWrite,
                          "the picture cannot be encoded; use .png or .tif");
    // The library's own first segment says nothing about resolution; ours takes its place.
    const std::size_t ownSegment = 4 + (std::size_t{stream[4]} << 8 | stream[5]);
    file.insert(file.end(), {0xff, StartOfImage});
    putSegments(properties, file);
    file.insert(file.end(), stream + ownSegment, stream + size);
}

}  // namespace

Format jpeg() {
    return {"JPEG",
            {".jpg", ".jpeg", ".jpe"},
            [](const Bytes& file) { return file.startsWith("\xff\xd8\xff", 3); },
            [](const Bytes& file, int) -> std::unique_ptr<PictureDecoder> {
                return std::make_unique<JpegDecoder>(file);
            },
            nullptr,
            encodeJpeg,
            0b0101,
            65500};
}

}  // namespace media::formats
