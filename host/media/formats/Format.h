#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/media/MediaError.h"
#include "host/media/MediaSource.h"

/// One file per picture format, behind the table of formats.cpp. A format reads from and writes to
/// memory and knows nothing of files, ranges or orientation: picture_reader and picture_writer do
/// these for all of them.
namespace media::formats {

/// The bytes of a file, or a part of them.
struct Bytes {
    const unsigned char* data = nullptr;
    std::size_t size = 0;

    /// Throws FormatError when the part is not there.
    Bytes part(std::size_t offset, std::size_t length) const;
    Bytes from(std::size_t offset) const { return part(offset, size < offset ? 1 : size - offset); }
    bool startsWith(const char* text, std::size_t length, std::size_t offset = 0) const;
};

/// Why a format cannot do its work; whoever knows the file's name puts it in front.
class FormatError : public std::runtime_error {
public:
    FormatError(MediaErrorKind kind, const std::string& text)
        : std::runtime_error(text), m_kind(kind) {}
    MediaErrorKind kind() const { return m_kind; }

private:
    MediaErrorKind m_kind;
};

/// The picture cannot be what the file says. what: a few words, "a checksum is wrong".
[[noreturn]] void refuseDamaged(const std::string& what);
/// The picture is whole, but of a kind that is not read. what: "12 bits a sample".
[[noreturn]] void refuseKind(const std::string& what);
enum class SampleType { Byte, Word, Float };  ///< 8 bits; 16 bits; 32 bits, 0 to 1 nominally
std::size_t bytesOf(SampleType type);

/// What a decoder will deliver.
struct PictureHead {
    int width = 0;
    int height = 0;
    int channels = 0;  ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGB and alpha
    SampleType samples = SampleType::Byte;
    int orientation = 1;  ///< 1 to 8 as in EXIF
    bool isPremultiplied = false;
    /// What a file of such a picture takes at the least: a shorter one is refused before memory is
    /// taken for its pixels.
    double leastBytes = 0;
    std::vector<std::string> notes;  ///< what is left out of the picture: "CMYK became RGB ..."
};

/// One picture of a file whose bytes outlive it. Every function throws FormatError or
/// std::bad_alloc.
class PictureDecoder {
public:
    virtual ~PictureDecoder() = default;
    const PictureHead& head() const { return m_head; }

    /// Decodes all rows, step bytes apart. Words and floats are in the machine's order.
    virtual void read(unsigned char* rows, std::size_t step) = 0;

    /// Resolution (as stored, before orientation), colour profile, camera data.
    virtual PictureProperties properties() = 0;

protected:
    PictureHead m_head;
};

/// The pictures of an animated file, composited one after the other. The file's bytes outlive it.
/// Every function throws FormatError or std::bad_alloc.
class AnimationDecoder {
public:
    virtual ~AnimationDecoder() = default;
    /// The canvas: samples are bytes, alpha is not multiplied in.
    const PictureHead& head() const { return m_head; }
    /// Seconds that each picture is shown, at least 0.
    const std::vector<Ratio>& delays() const { return m_delays; }

    /// Composites the picture behind the last one. The canvas has rows without gaps and lives until
    /// the next call.
    virtual const unsigned char* next() = 0;
    /// The first picture is next.
    virtual void rewind() = 0;

protected:
    PictureHead m_head;
    std::vector<Ratio> m_delays;
};

/// Pixels to be written: rows of 8-bit samples, or for formats that write words of 16 bits in the
/// machine's order.
struct PictureRows {
    const unsigned char* data = nullptr;
    std::ptrdiff_t step = 0;
    int width = 0;
    int height = 0;
    int channels = 0;
    int sampleBytes = 1;  ///< 1 or 2

    std::size_t pixelBytes() const { return static_cast<std::size_t>(channels) * sampleBytes; }
    const unsigned char* row(int y) const { return data + step * y; }
    std::size_t rowBytes() const { return static_cast<std::size_t>(width) * pixelBytes(); }
};

struct Format {
    const char* name;  ///< for messages: "PNG"
    std::vector<const char*> suffixes;
    bool (*recognises)(const Bytes& file);
    /// Makes the decoder of a page.
    std::unique_ptr<PictureDecoder> (*open)(const Bytes& file, int page);
    int (*pageCount)(const Bytes& file);  ///< null: always one

    /// Null: the format is not written. Otherwise appends a picture file.
    void (*encode)(const PictureRows& rows, const PictureProperties& properties,
                   const WriteOptions& options, const std::string& suffix,
                   std::vector<unsigned char>& file);
    unsigned writtenChannels;  ///< bit c - 1: pictures of c channels can be held
    int largestSide;           ///< of a picture written
    /// Null: the format has no moving pictures. Otherwise makes the decoder of a file that holds
    /// several, and null for another.
    std::unique_ptr<AnimationDecoder> (*openAnimation)(const Bytes& file) = nullptr;
    bool writesWords = false;  ///< pictures of 16 bits a sample, too
};

/// The format of these bytes, by what they begin with. Throws FormatError naming the formats there
/// are.
const Format& recognised(const Bytes& file);

const std::vector<Format>& all();

// One function or row for each file of this folder.
std::vector<Format> png();
Format jpeg();
Format tiff();
Format webp();
std::vector<Format> libraryFormats();  ///< what OpenImageIO reads and writes

}  // namespace media::formats
