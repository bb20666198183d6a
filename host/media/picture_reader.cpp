#include "host/media/picture_reader.h"

#include <OpenImageIO/strutil.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <new>
#include <set>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"
#include "host/media/picture_library.h"

namespace media {

namespace {

constexpr int kLargestSide = 32768;
constexpr std::int64_t kMostPixels = std::int64_t{1} << 28;

[[noreturn]] void fail(MediaErrorKind kind, const std::string& path, const std::string& rest) {
    throw MediaError(kind, shown(path) + ": " + rest);
}

/// The first line of a library's message, without a full stop.
std::string firstLine(const std::string& message) {
    std::string line = shown(message.substr(0, message.find('\n')));
    while (!line.empty() && (line.back() == '.' || line.back() == ' ')) line.pop_back();
    return line.empty() ? "no reason given" : line;
}

[[noreturn]] void failDamaged(const std::string& path, const std::string& reason) {
    fail(
        MediaErrorKind::InvalidData, path,
        "the picture is damaged or cut short (" + firstLine(reason) + "); copy or export it again");
}

/// Formats that OpenImageIO names by suffix but that are no pictures to it, or only to it.
const std::set<std::string> kOtherFormats = {"ffmpeg", "null", "term", "openvdb", "zfile"};

struct Suffixes {
    std::set<std::string> pictures;
    std::set<std::string> others;

    Suffixes() {
        for (const std::string& entry :
             OIIO::Strutil::splits(OIIO::get_string_attribute("extension_list"), ";")) {
            const std::size_t colon = entry.find(':');
            const bool isOther = kOtherFormats.count(entry.substr(0, colon)) != 0;
            for (const std::string& suffix : OIIO::Strutil::splits(entry.substr(colon + 1), ","))
                (isOther ? others : pictures).insert('.' + suffix);
        }
    }
};

const Suffixes& suffixes() {
    static const Suffixes known;
    return known;
}

void requireReadableFile(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        fail(MediaErrorKind::MissingInput, path,
             errno == ENOENT ? "there is no such file; check the name and the folder"
                             : "the file cannot be read (" + reasonOf(errno) + "); check its path");
    if (S_ISDIR(status.st_mode))
        fail(MediaErrorKind::MissingInput, path,
             "this is a folder where a picture file is needed; name a file in it");
    if (!S_ISREG(status.st_mode))
        fail(MediaErrorKind::MissingInput, path,
             "this is no regular file; copy what it delivers to a file first");
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        fail(MediaErrorKind::MissingInput, path,
             "the file cannot be read (" + reasonOf(errno) + "); change its permissions");
    ::close(descriptor);
    if (status.st_size == 0)
        fail(MediaErrorKind::InvalidData, path, "the file is empty; copy or export it again");
}

/// Notices a PNG file that ends early before libpng does, which would write to standard error.
void requireCompletePng(const std::string& path) {
    constexpr std::array<char, 8> kSignature = {'\x89', 'P', 'N', 'G', '\r', '\n', '\x1a', '\n'};
    std::ifstream file(path, std::ios::binary);
    std::array<char, 8> head{};
    if (!file.read(head.data(), head.size()) || head != kSignature) return;
    while (file.read(head.data(), head.size())) {  // a chunk: length, name, data, checksum
        if (std::memcmp(head.data() + 4, "IEND", 4) == 0) return;
        const auto byte = [&](int i) {
            return std::streamoff{static_cast<unsigned char>(head[i])};
        };
        file.seekg((byte(0) << 24 | byte(1) << 16 | byte(2) << 8 | byte(3)) + 4, std::ios::cur);
    }
    failDamaged(path, "the end of the file is missing");
}

const OIIO::ImageSpec& headOf(const OIIO::ImageInput& input) {
    return input.spec();
}

void requireAllowedSize(const std::string& path, const OIIO::ImageSpec& head) {
    const std::string size = std::to_string(head.width) + " x " + std::to_string(head.height);
    if (head.width < 1 || head.height < 1 || head.nchannels < 1)
        failDamaged(path, "its size is " + size + " pixels");
    if (head.width > kLargestSide || head.height > kLargestSide)
        fail(MediaErrorKind::InvalidData, path,
             size + " pixels exceed the limit of 32,768 pixels a side; scale or crop it");
    if (std::int64_t{head.width} * head.height > kMostPixels)
        fail(MediaErrorKind::InvalidData, path,
             size + " pixels exceed the limit of 268,435,456 pixels; scale or crop it");
    if (head.deep || head.depth > 1)
        fail(MediaErrorKind::InvalidData, path,
             "deep and volume pictures have no single colour a pixel; flatten it first");
}

std::unique_ptr<OIIO::ImageInput> openPicture(const std::string& path) {
    requireReadableFile(path);
    const bool isVideo = suffixes().others.count(suffixOf(fileNameOf(path))) != 0;
    constexpr char kNoPicture[] =
        "this is not a picture; give a picture, or the video's frames as pictures";
    if (isVideo) fail(MediaErrorKind::InvalidData, path, kNoPicture);
    requireCompletePng(path);

    keepToOwnThread();
    OIIO::ImageSpec wishes;
    wishes.attribute("oiio:UnassociatedAlpha", 1);
    std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::open(path, &wishes);
    if (!input) {
        const std::string reason = firstLine(OIIO::geterror());
        const bool isUnknown = OIIO::Strutil::contains(reason, "could not find a format reader");
        fail(MediaErrorKind::InvalidData, path,
             "the file holds no picture that can be read (" +
                 (isUnknown ? std::string("its format is unknown") : reason) +
                 "); check that it is whole, or convert it to PNG or TIFF");
    }
    if (OIIO::Strutil::icontains(input->format_name(), "ffmpeg"))
        fail(MediaErrorKind::InvalidData, path, kNoPicture);
    requireAllowedSize(path, headOf(*input));
    return input;
}

/// How many of a file's channels the frame takes: up to four, of more the colours and an alpha that
/// stands right behind them.
int channelsTaken(const OIIO::ImageSpec& head) {
    if (head.nchannels <= 4) return head.nchannels;
    return head.alpha_channel == 3 ? 4 : 3;
}

/// Orientation 5 to 8 of an EXIF tag exchange width and height.
int orientationOf(const OIIO::ImageSpec& head) {
    const int orientation = head.get_int_attribute("Orientation", 1);
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

/// True when the colours read are multiplied by alpha although we asked for the contrary.
bool isPremultiplied(const OIIO::ImageInput& input, int channels) {
    if (channels != 2 && channels != 4) return false;
    const std::string format = input.format_name();
    const OIIO::ImageSpec& head = headOf(input);
    if (format == "tiff")
        return channels == 4 && head.alpha_channel == 3 &&
               head.get_int_attribute("oiio:UnassociatedAlpha") == 0;
    return format == "openexr" || format == "webp";
}

unsigned char quantize(float sample) {
    return sample > 0 ? static_cast<unsigned char>(std::min(sample, 1.0f) * 255 + 0.5f) : 0;
}

/// Colours divided by alpha before they are rounded; where alpha is 0 they are 0.
void unpremultiply(const std::vector<float>& samples, int channels, HkImage& image) {
    const int colours = channels - 1;
    auto in = samples.begin();
    for (int y = 0; y < image.height; ++y) {
        unsigned char* out = image.data + static_cast<std::ptrdiff_t>(image.step) * y;
        for (int x = 0; x < image.width; ++x, in += channels, out += channels) {
            const float alpha = in[colours];
            for (int c = 0; c < colours; ++c) out[c] = alpha > 0 ? quantize(in[c] / alpha) : 0;
            out[colours] = quantize(alpha);
        }
    }
}

std::unique_ptr<HkImage> newImage(int width, int height, int channels) {
    auto image = std::make_unique<HkImage>(width, height, channels, nullptr, 4u);
    if (!image->data) throw std::bad_alloc();
    return image;
}

bool readSamples(OIIO::ImageInput& input, int channels, HkImage& image) {
    if (!isPremultiplied(input, channels))
        return input.read_image(0, 0, 0, channels, OIIO::TypeUInt8, image.data, channels,
                                image.step);
    std::vector<float> samples(static_cast<std::size_t>(image.width) * image.height * channels);
    if (!input.read_image(0, 0, 0, channels, OIIO::TypeFloat, samples.data())) return false;
    unpremultiply(samples, channels, image);
    return true;
}

/// The picture as its orientation tag wants it seen. Not by the library's own function, which takes
/// orientation 5 for 7 and 7 for 5.
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

PictureProperties propertiesOf(const OIIO::ImageSpec& head) {
    PictureProperties properties;
    properties.xResolution = head.get_float_attribute("XResolution");
    properties.yResolution = head.get_float_attribute("YResolution");
    const std::string unit = head.get_string_attribute("ResolutionUnit");
    if (unit == "in" || unit == "inch") properties.resolutionUnit = "in";
    if (unit == "cm") properties.resolutionUnit = "cm";
    if (orientationOf(head) >= 5) std::swap(properties.xResolution, properties.yResolution);
    if (const OIIO::ParamValue* profile = head.find_attribute("ICCProfile")) {
        const auto* bytes = static_cast<const unsigned char*>(profile->data());
        properties.iccProfile.assign(bytes, bytes + profile->type().size());
    }
    return properties;
}

/// Runs work; whatever the libraries throw becomes a message that names the file.
template <typename Work>
auto namingFile(const std::string& path, Work work) {
    try {
        return work();
    } catch (const MediaError&) {
        throw;
    } catch (const std::bad_alloc&) {
        fail(MediaErrorKind::NoMemory, path,
             "there is not enough memory to read the picture; use fewer jobs at a time");
    } catch (const std::exception& error) {
        fail(MediaErrorKind::ReadWrite, path,
             "the picture cannot be read (" + shown(error.what()) + ")");
    }
}

}  // namespace

bool hasPictureSuffix(const std::string& fileName) {
    return suffixes().pictures.count(suffixOf(fileName)) != 0;
}

PictureInfo readPictureInfo(const std::string& path) {
    return namingFile(path, [&] {
        const std::unique_ptr<OIIO::ImageInput> input = openPicture(path);
        const OIIO::ImageSpec& head = headOf(*input);
        PictureInfo info{head.width, head.height, channelsTaken(head)};
        if (orientationOf(head) >= 5) std::swap(info.width, info.height);
        return info;
    });
}

std::unique_ptr<HkImage> readPicture(const std::string& path, PictureProperties* properties) {
    return namingFile(path, [&] {
        const std::unique_ptr<OIIO::ImageInput> input = openPicture(path);
        const OIIO::ImageSpec& head = headOf(*input);
        const int channels = channelsTaken(head);
        std::unique_ptr<HkImage> image = newImage(head.width, head.height, channels);
        // A JPEG file cut short is read "successfully", with an error left behind.
        if (!readSamples(*input, channels, *image) || input->has_error())
            failDamaged(path, input->geterror());
        image = upright(std::move(image), orientationOf(head));
        if (properties) *properties = propertiesOf(head);
        return image;
    });
}

}  // namespace media
