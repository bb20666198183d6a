#include "host/media/picture_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <system_error>

#include "host/media/MediaError.h"
#include "host/media/PictureLimits.h"
#include "host/media/file_names.h"
#include "host/media/formats/Format.h"
#include "host/media/formats/deflate.h"

namespace media {

namespace {

using formats::Bytes;
using formats::PictureDecoder;
using formats::PictureHead;
using formats::SampleType;
using formats::Scratch;

[[noreturn]] void fail(MediaErrorKind kind, const std::string& path, const std::string& rest) {
    throw MediaError(kind, shown(path) + ": " + rest);
}

/// A file opened for reading.
class InputFile {
public:
    explicit InputFile(const std::string& path) {
        struct stat status {};
        // O_NONBLOCK: a pipe without a writer is refused below, not waited for.
        m_descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0)
            fail(MediaErrorKind::MissingInput, path,
                 errno == ENOENT ? "there is no such file; check the name and the folder"
                                 : "the file cannot be read (" + reasonOf(errno) +
                                       "); check its path and permissions");
        if (S_ISREG(status.st_mode) && status.st_size > 0) {
            m_size = static_cast<std::size_t>(status.st_size);
            return;
        }
        ::close(m_descriptor);
        if (S_ISDIR(status.st_mode))
            fail(MediaErrorKind::MissingInput, path,
                 "this is a folder where a picture file is needed; name a file in it");
        if (!S_ISREG(status.st_mode))
            fail(MediaErrorKind::MissingInput, path,
                 "this is no regular file; copy what it delivers to a file first");
        fail(MediaErrorKind::InvalidData, path, "the file is empty; copy or export it again");
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() { ::close(m_descriptor); }

    Bytes read(const std::string& path, Scratch& scratch) const {
        unsigned char* bytes = scratch.atLeast(m_size);
        std::size_t done = 0;
        while (done < m_size) {
            const ssize_t count = ::read(m_descriptor, bytes + done, m_size - done);
            if (count == 0) break;  // it became shorter meanwhile
            if (count < 0 && errno != EINTR)
                fail(MediaErrorKind::ReadWrite, path,
                     "the file cannot be read (" + reasonOf(errno) + "); check the disk");
            if (count > 0) done += static_cast<std::size_t>(count);
        }
        return {bytes, done};
    }

private:
    int m_descriptor;
    std::size_t m_size = 0;
};

void requireAllowed(const std::string& path, const PictureHead& head, std::size_t fileSize) {
    const std::string size = std::to_string(head.width) + " x " + std::to_string(head.height);
    if (head.width < 1 || head.height < 1 || head.channels < 1 || head.channels > 4)
        formats::refuseDamaged("its size cannot be");
    const std::string refusal = refusalOfSize(head.width, head.height);
    if (!refusal.empty()) fail(MediaErrorKind::InvalidData, path, refusal);
    if (head.leastBytes > static_cast<double>(fileSize))
        formats::refuseDamaged("the file is too short for the " + size + " pixels it claims");
}

/// What formats and the heap throw becomes a message that names the file.
template <typename Work>
auto namingFile(const std::string& path, Work work) {
    try {
        return work();
    } catch (const formats::FormatError& error) {
        fail(error.kind(), path, error.what());
    } catch (const std::bad_alloc&) {
        fail(MediaErrorKind::NoMemory, path,
             "there is not enough memory to read the picture; use fewer jobs at a time");
    } catch (const std::length_error&) {
        fail(MediaErrorKind::NoMemory, path,
             "there is not enough memory to read the picture; use fewer jobs at a time");
    } catch (const MediaError&) {
        throw;
    } catch (const std::system_error& error) {  // a library's thread, perhaps
        fail(error.code() == std::errc::resource_unavailable_try_again ? MediaErrorKind::NoMemory
                                                                       : MediaErrorKind::ReadWrite,
             path,
             "the picture cannot be read (" + reasonOf(error.code().value()) +
                 "); use fewer jobs at a time");
    } catch (const std::exception&) {  // the library's words are not ours
        fail(MediaErrorKind::InvalidData, path,
             "the picture is damaged or of a kind that is not read; copy or export it again");
    }
}

/// Runs work(decoder, format, file) on a page.
template <typename Work>
auto withPicture(const std::string& path, int page, Work work) {
    return namingFile(path, [&] {
        thread_local Scratch scratch;
        const Bytes file = InputFile(path).read(path, scratch);
        const formats::Format& format = formats::recognised(file);
        const std::unique_ptr<PictureDecoder> decoder = format.open(file, page);
        requireAllowed(path, decoder->head(), file.size);
        return work(*decoder, format, file);
    });
}

std::unique_ptr<HkImage> newImage(int width, int height, int channels,
                                  std::unique_ptr<HkImage> recycled = nullptr) {
    if (recycled && recycled->data && recycled->width == width && recycled->height == height &&
        recycled->channels == channels && recycled->step == width * channels) {
        recycled->roiWidth = width;
        recycled->roiHeight = height;
        return recycled;
    }
    recycled.reset();  // before the new one is taken
    // Rows without gaps: what a decoder delivers at a stretch, and as good as any to the filters.
    auto image = std::make_unique<HkImage>(width, height, channels, nullptr, 1u);
    if (!image->data) throw std::bad_alloc();
    return image;
}

/// A range in the values of a type: Type and Given as they are.
struct Limits {
    double low, high;
};

double greatestOf(SampleType type) {
    return type == SampleType::Byte ? 255 : type == SampleType::Word ? 65535 : 1;
}

template <typename Sample>
Limits limitsOfSamples(const unsigned char* samples, const PictureHead& head) {
    const auto* values = reinterpret_cast<const Sample*>(samples);
    const std::size_t count =
        static_cast<std::size_t>(head.width) * static_cast<std::size_t>(head.height);
    const auto channels = static_cast<std::size_t>(head.channels);
    const std::size_t colours = head.channels % 2 ? channels : channels - 1;
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t c = 0; c < colours; ++c) {
            const auto value = static_cast<double>(values[i * channels + c]);
            if (!std::isfinite(value)) continue;
            low = std::min(low, value);
            high = std::max(high, value);
        }
    return {low, high};
}

Limits limitsOf(const unsigned char* samples, const PictureHead& head) {
    switch (head.samples) {
        case SampleType::Byte:
            return limitsOfSamples<std::uint8_t>(samples, head);
        case SampleType::Word:
            return limitsOfSamples<std::uint16_t>(samples, head);
        default:
            return limitsOfSamples<float>(samples, head);
    }
}

unsigned char scaled(double value, const Limits& limits) {
    const double share = (value - limits.low) / (limits.high - limits.low);
    return share > 0 ? static_cast<unsigned char>(std::min(share, 1.0) * 255 + 0.5) : 0;
}

/// Samples of a pixel to 8 bits: the colours by their limits, alpha by those of the type.
template <typename Sample>
void convert(const unsigned char* samples, const PictureHead& head, const Limits& limits,
             HkImage& image) {
    const bool hasAlpha = head.channels == 2 || head.channels == 4;
    const int colours = head.channels - (hasAlpha ? 1 : 0);
    const Limits whole{0, greatestOf(head.samples)};
    // Whole numbers by a table: a division for each sample would take longer than decoding.
    std::vector<unsigned char> table, alphaTable;
    if constexpr (!std::is_same_v<Sample, float>) {
        const int count = std::numeric_limits<Sample>::max() + 1;
        for (int i = 0; i < count; ++i) table.push_back(scaled(i, limits));
        for (int i = 0; i < count && hasAlpha; ++i) alphaTable.push_back(scaled(i, whole));
    }
    const auto* in = reinterpret_cast<const Sample*>(samples);
    for (int y = 0; y < head.height; ++y) {
        unsigned char* out = image.data + static_cast<std::ptrdiff_t>(image.step) * y;
        for (int x = 0; x < head.width; ++x, in += head.channels, out += head.channels) {
            // Where alpha is 0 the colours are 0.
            const double alpha = static_cast<double>(in[head.channels - 1]) / whole.high;
            for (int c = 0; c < head.channels; ++c) {
                const bool isAlpha = c == colours;
                if constexpr (std::is_same_v<Sample, float>)
                    out[c] = scaled(
                        head.isPremultiplied && !isAlpha ? alpha > 0 ? in[c] / alpha : 0 : in[c],
                        isAlpha ? whole : limits);
                else if (head.isPremultiplied && !isAlpha)
                    out[c] = alpha > 0 ? scaled(in[c] / alpha, limits) : 0;
                else
                    out[c] = (isAlpha ? alphaTable : table)[in[c]];
            }
        }
    }
}

void convert(const unsigned char* samples, const PictureHead& head, const Limits& limits,
             HkImage& image) {
    switch (head.samples) {
        case SampleType::Byte:
            return convert<std::uint8_t>(samples, head, limits, image);
        case SampleType::Word:
            return convert<std::uint16_t>(samples, head, limits, image);
        default:
            return convert<float>(samples, head, limits, image);
    }
}

std::size_t rowBytes(const PictureHead& head) {
    return static_cast<std::size_t>(head.width) * static_cast<std::size_t>(head.channels) *
           formats::bytesOf(head.samples);
}

unsigned char* decodeToScratch(PictureDecoder& decoder) {
    const PictureHead& head = decoder.head();
    thread_local Scratch scratch;
    unsigned char* samples =
        scratch.atLeast(rowBytes(head) * static_cast<std::size_t>(head.height));
    decoder.read(samples, rowBytes(head));
    return samples;
}

std::unique_ptr<HkImage> decode(PictureDecoder& decoder, const SampleRange& range,
                                std::unique_ptr<HkImage> recycled) {
    const PictureHead& head = decoder.head();
    std::unique_ptr<HkImage> image =
        newImage(head.width, head.height, head.channels, std::move(recycled));
    if (head.samples == SampleType::Byte && !head.isPremultiplied &&
        range.kind == SampleRange::Type) {
        decoder.read(image->data, static_cast<std::size_t>(image->step));
        return image;
    }
    const unsigned char* samples = decodeToScratch(decoder);
    const Limits limits = range.kind == SampleRange::Each    ? limitsOf(samples, head)
                          : range.kind == SampleRange::Given ? Limits{range.low, range.high}
                                                             : Limits{0, greatestOf(head.samples)};
    convert(samples, head, limits, *image);
    return image;
}

/// The picture as its orientation tag wants it seen.
std::unique_ptr<HkImage> upright(std::unique_ptr<HkImage> lying, int orientation) {
    if (orientation == 1) return lying;
    // Orientations 5 to 8 show the file's rows as columns. Each tells the side on which the file's
    // first row or column is seen.
    const bool transposed = orientation >= 5;
    const bool fromRight =
        orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
    const bool fromBottom =
        orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
    const int channels = lying->channels;
    std::unique_ptr<HkImage> standing =
        newImage(transposed ? lying->height : lying->width,
                 transposed ? lying->width : lying->height, channels);
    for (int y = 0; y < standing->height; ++y) {
        unsigned char* out = standing->data + static_cast<std::ptrdiff_t>(standing->step) * y;
        for (int x = 0; x < standing->width; ++x, out += channels) {
            const int column = fromRight ? standing->width - 1 - x : x;
            const int row = fromBottom ? standing->height - 1 - y : y;
            const std::ptrdiff_t fileRow = transposed ? column : row;
            const std::ptrdiff_t fileColumn = transposed ? row : column;
            std::copy_n(lying->data + lying->step * fileRow + channels * fileColumn, channels, out);
        }
    }
    return standing;
}

PictureInfo infoOf(const PictureHead& head) {
    PictureInfo info{head.width, head.height, head.channels};
    if (head.orientation >= 5) std::swap(info.width, info.height);
    return info;
}

PictureProperties propertiesOf(PictureDecoder& decoder, const SampleRange& range) {
    const PictureHead& head = decoder.head();
    PictureProperties properties = decoder.properties();
    if (head.orientation >= 5) std::swap(properties.xResolution, properties.yResolution);
    properties.notes = head.notes;
    if (range.kind == SampleRange::Type && head.samples == SampleType::Word)
        properties.notes.push_back("16 bits cut to 8; --range chooses which values are kept apart");
    if (range.kind == SampleRange::Type && head.samples == SampleType::Float &&
        !head.isPremultiplied)
        properties.notes.push_back(
            "numbers below 0 and above 1 cut off, the others cut to 8 bits; --range chooses "
            "others");
    return properties;
}

class OpenAnimation : public PictureAnimation {
public:
    OpenAnimation(std::string path, std::unique_ptr<Scratch> bytes,
                  std::unique_ptr<formats::AnimationDecoder> decoder, PictureProperties properties)
        : m_path(std::move(path)),
          m_bytes(std::move(bytes)),
          m_decoder(std::move(decoder)),
          m_properties(std::move(properties)) {}

    PictureInfo info() const override { return infoOf(m_decoder->head()); }
    std::vector<Ratio> delays() const override { return m_decoder->delays(); }
    PictureProperties properties() const override { return m_properties; }

    std::unique_ptr<HkImage> read(std::size_t number, std::unique_ptr<HkImage> recycled) override {
        if (m_failure && number >= m_failed) throw MediaError(*m_failure);
        if (number < m_next) {
            m_decoder->rewind();
            m_next = 0;
        }
        const PictureHead& head = m_decoder->head();
        return namingFile(m_path, [&] {
            const unsigned char* canvas = nullptr;
            for (; m_next <= number; ++m_next) canvas = nextCanvas();
            std::unique_ptr<HkImage> image =
                newImage(head.width, head.height, head.channels, std::move(recycled));
            const auto size = static_cast<std::size_t>(image->step);
            for (int y = 0; y < head.height; ++y)
                std::copy_n(canvas + size * static_cast<std::size_t>(y), size,
                            image->data + static_cast<std::ptrdiff_t>(image->step) * y);
            return upright(std::move(image), head.orientation);
        });
    }

private:
    /// What lies behind a frame that cannot be decoded cannot either.
    const unsigned char* nextCanvas() {
        try {
            return m_decoder->next();
        } catch (const formats::FormatError& error) {
            m_failed = m_next;
            m_failure = MediaError(error.kind(), shown(m_path) + ": frame " +
                                                     std::to_string(m_next) + ": " + error.what());
            throw MediaError(*m_failure);
        }
    }

    const std::string m_path;
    const std::unique_ptr<Scratch> m_bytes;  // of the file
    const std::unique_ptr<formats::AnimationDecoder> m_decoder;
    const PictureProperties m_properties;
    std::size_t m_next = 0;  // the picture that the decoder gives next
    std::size_t m_failed = 0;
    std::optional<MediaError> m_failure;
};

}  // namespace

bool hasPictureSuffix(const std::string& fileName) {
    const std::string suffix = suffixOf(fileName);
    for (const formats::Format& format : formats::all())
        for (const char* candidate : format.suffixes)
            if (suffix == candidate) return true;
    return false;
}

PictureInfo readPictureInfo(const std::string& path, int page) {
    return withPicture(path, page,
                       [](PictureDecoder& decoder, const formats::Format&, const Bytes&) {
                           return infoOf(decoder.head());
                       });
}

std::unique_ptr<HkImage> readPicture(const std::string& path, int page, const SampleRange& range,
                                     PictureProperties* properties,
                                     std::unique_ptr<HkImage> recycled) {
    return withPicture(
        path, page, [&](PictureDecoder& decoder, const formats::Format&, const Bytes&) {
            std::unique_ptr<HkImage> image = decode(decoder, range, std::move(recycled));
            image = upright(std::move(image), decoder.head().orientation);
            if (properties) *properties = propertiesOf(decoder, range);
            return image;
        });
}

std::unique_ptr<PictureAnimation> PictureAnimation::open(const std::string& path) {
    auto bytes = std::make_unique<Scratch>();
    Bytes file;
    const formats::Format* format = nullptr;
    try {
        file = InputFile(path).read(path, *bytes);
        format = &formats::recognised(file);
    } catch (const std::exception&) {
        return nullptr;
    }
    if (!format->openAnimation) return nullptr;
    return namingFile(path, [&]() -> std::unique_ptr<PictureAnimation> {
        std::unique_ptr<formats::AnimationDecoder> decoder = format->openAnimation(file);
        if (!decoder) return nullptr;
        requireAllowed(path, decoder->head(), file.size);
        PictureProperties properties =
            propertiesOf(*format->open(file, 0), SampleRange{SampleRange::Each, 0, 0});
        properties.hasPagesBehind = false;
        properties.notes = decoder->head().notes;
        return std::make_unique<OpenAnimation>(path, std::move(bytes), std::move(decoder),
                                               std::move(properties));
    });
}

int pageCountOf(const std::string& path) {
    try {
        return withPicture(path, 0,
                           [](PictureDecoder&, const formats::Format& format, const Bytes& file) {
                               return format.pageCount ? std::max(1, format.pageCount(file)) : 1;
                           });
    } catch (const MediaError&) {
        return 1;
    }
}

SampleRange sampleRangeOf(const std::string& path, int page) {
    return withPicture(path, page,
                       [](PictureDecoder& decoder, const formats::Format&, const Bytes&) {
                           const Limits limits = limitsOf(decodeToScratch(decoder), decoder.head());
                           return SampleRange{SampleRange::Given, limits.low, limits.high};
                       });
}

}  // namespace media
