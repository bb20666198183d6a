#include "host/media/picture_writer.h"

#include <algorithm>
#include <initializer_list>
#include <new>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"
#include "host/media/formats/Format.h"

namespace media {

namespace {

using formats::Format;

/// The format that files of this suffix are written in, or null.
const Format* formatOf(const std::string& path) {
    const std::string suffix = suffixOf(fileNameOf(path));
    for (const Format& format : formats::all())
        for (const char* candidate : format.suffixes)
            if (format.encode && suffix == candidate) return &format;
    return nullptr;
}

bool holds(const Format& format, int channels) {
    return channels >= 1 && channels <= 4 && (format.writtenChannels >> (channels - 1) & 1) != 0;
}

/// True for a colour profile whose head is whole (its length, its signature, the one white point
/// there is) and for the kind of picture at hand: the frame may have lost its colours.
bool profileFits(const std::vector<unsigned char>& profile, int channels) {
    constexpr std::size_t kHeaderBytes = 128;
    const auto holdsAt = [&](std::size_t offset, std::initializer_list<unsigned char> bytes) {
        return std::equal(bytes.begin(), bytes.end(),
                          profile.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    if (profile.size() < kHeaderBytes) return false;
    const std::size_t length = std::size_t{profile[0]} << 24 | std::size_t{profile[1]} << 16 |
                               std::size_t{profile[2]} << 8 | profile[3];
    const bool isWhole = length == profile.size() && holdsAt(36, {'a', 'c', 's', 'p'}) &&
                         holdsAt(68, {0, 0, 0xf6, 0xd6, 0, 1, 0, 0, 0, 0, 0xd3, 0x2d});
    return isWhole &&
           (channels <= 2 ? holdsAt(16, {'G', 'R', 'A', 'Y'}) : holdsAt(16, {'R', 'G', 'B', ' '}));
}

void encode(const std::string& path, const formats::PictureRows& rows,
            const PictureProperties& properties, const WriteOptions& options,
            std::vector<unsigned char>& file) {
    try {
        formatOf(path)->encode(rows, properties, options, suffixOf(fileNameOf(path)), file);
    } catch (const formats::FormatError& error) {
        throw MediaError(error.kind(), shown(path) + ": " + error.what());
    } catch (const std::bad_alloc&) {
        throw MediaError(
            MediaErrorKind::NoMemory,
            shown(path) + ": there is not enough memory to write the picture; use fewer jobs");
    }
}

}  // namespace

bool isWritable(const std::string& fileName) {
    return formatOf(fileName) != nullptr;
}

bool holdsPages(const std::string& fileName) {
    const Format* format = formatOf(fileName);
    return format && format->pageCount;
}

std::string writableSuffixes() {
    std::vector<std::string> suffixes;
    for (const Format& format : formats::all())
        if (format.encode) suffixes.push_back(format.suffixes[0]);
    std::string list = suffixes.front();
    for (std::size_t i = 1; i < suffixes.size(); ++i)
        list += (i + 1 == suffixes.size() ? " or " : ", ") + suffixes[i];
    return list;
}

void checkPicture(const std::string& path, const PictureInfo& picture) {
    const Format* format = formatOf(path);
    if (!format)
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(path) + ": pictures are not written to files of this suffix; use " +
                             writableSuffixes());
    if (!holds(*format, picture.channels)) {
        const char* content[] = {"a grey picture", "a grey picture with alpha", "a colour picture",
                                 "a colour picture with alpha"};
        const std::string what = picture.channels >= 1 && picture.channels <= 4
                                     ? content[picture.channels - 1]
                                     : std::to_string(picture.channels) + " channels";
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(path) + ": this format cannot hold " + what + "; use .png or .tif");
    }
    if (picture.width > format->largestSide || picture.height > format->largestSide)
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(path) + ": " + std::to_string(picture.width) + " x " +
                             std::to_string(picture.height) +
                             " pixels are more than this format holds; use .tif");
}

void encodePicture(const std::string& path, const HkImage& image,
                   const PictureProperties& properties, const WriteOptions& options,
                   std::vector<unsigned char>& file) {
    checkPicture(path, {image.roiWidth, image.roiHeight, image.channels});
    PictureProperties kept = properties;
    if (!profileFits(kept.iccProfile, image.channels)) kept.iccProfile.clear();
    encode(path, {image.data, image.step, image.roiWidth, image.roiHeight, image.channels}, kept,
           options, file);
}

bool isDeepWritable(const std::string& fileName) {
    const Format* format = formatOf(fileName);
    return format && format->writesWords;
}

std::vector<unsigned char> encodeDeepPicture(const std::string& path, const DeepPicture& picture,
                                             const WriteOptions& options) {
    if (!isDeepWritable(path))
        throw MediaError(
            MediaErrorKind::CannotCreate,
            shown(path) + ": this format does not hold 16 bits a sample; use .png or .tif");
    checkPicture(path, {picture.width, picture.height, 1});
    std::vector<unsigned char> file;
    encode(path,
           {reinterpret_cast<const unsigned char*>(picture.samples.data()), 2 * picture.width,
            picture.width, picture.height, 1, 2},
           {}, options, file);
    return file;
}

}  // namespace media
