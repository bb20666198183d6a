#include "host/media/picture_writer.h"

#include <OpenImageIO/filesystem.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <memory>
#include <new>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"
#include "host/media/picture_library.h"

namespace media {

namespace {

/// A format that is written; the first suffix is the one shown. channels: bit c - 1 is set when
/// pictures of c channels can be held.
struct Format {
    const char* name;
    std::array<const char*, 3> suffixes;
    unsigned channels;
    int largestSide;
    const char* compression;
};

constexpr unsigned kAny = 0b1111;
constexpr unsigned kGreyOrColour = 0b0101;
constexpr unsigned kNotGreyAlpha = 0b1101;

// JPEG quality 92 is where the eye stops seeing a difference while files stay small.
constexpr Format kFormats[] = {
    {"png", {".png"}, kAny, 32768, nullptr},
    {"tiff", {".tif", ".tiff"}, kAny, 32768, "zip"},
    {"jpeg", {".jpg", ".jpeg", ".jpe"}, kGreyOrColour, 32768, "jpeg:92"},
    {"bmp", {".bmp"}, kNotGreyAlpha, 32768, nullptr},
    {"targa", {".tga"}, kNotGreyAlpha, 32768, nullptr},
    {"pnm", {".pnm"}, kGreyOrColour, 32768, nullptr},
    {"pnm", {".ppm"}, 0b0100, 32768, nullptr},
    {"pnm", {".pgm"}, 0b0001, 32768, nullptr},
};

const Format* formatOf(const std::string& path) {
    const std::string suffix = suffixOf(fileNameOf(path));
    for (const Format& format : kFormats)
        for (const char* candidate : format.suffixes)
            if (candidate && suffix == candidate) return &format;
    return nullptr;
}

bool holds(const Format& format, int channels) {
    return channels >= 1 && channels <= 4 && (format.channels >> (channels - 1) & 1) != 0;
}

const Format& requireFormat(const std::string& path) {
    const Format* format = formatOf(path);
    if (!format)
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(path) + ": pictures are not written to files of this suffix; use " +
                             writableSuffixes());
    return *format;
}

/// True for a colour profile whose head is whole (its length, its signature, the one white point
/// there is) and for the kind of picture at hand: the frame may have lost its colours.
bool profileFits(const std::vector<unsigned char>& profile, int channels) {
    constexpr std::size_t kHeaderBytes = 128;
    const auto holds = [&](std::size_t offset, std::initializer_list<unsigned char> bytes) {
        return std::equal(bytes.begin(), bytes.end(), profile.begin() + offset);
    };
    if (profile.size() < kHeaderBytes) return false;
    const std::size_t length = std::size_t{profile[0]} << 24 | std::size_t{profile[1]} << 16 |
                               std::size_t{profile[2]} << 8 | profile[3];
    const bool isWhole = length == profile.size() && holds(36, {'a', 'c', 's', 'p'}) &&
                         holds(68, {0, 0, 0xf6, 0xd6, 0, 1, 0, 0, 0, 0, 0xd3, 0x2d});
    return isWhole &&
           (channels <= 2 ? holds(16, {'G', 'R', 'A', 'Y'}) : holds(16, {'R', 'G', 'B', ' '}));
}

OIIO::ImageSpec describe(const Format& format, const HkImage& image,
                         const PictureProperties& properties) {
    OIIO::ImageSpec head(image.roiWidth, image.roiHeight, image.channels, OIIO::TypeUInt8);
    head.attribute("oiio:UnassociatedAlpha", 1);
    head.attribute("DateTime", "");  // else TIFF files would carry the time and never be the same
    if (format.compression) head.attribute("Compression", format.compression);
    if (head.get_string_attribute("Compression") == "zip") head.attribute("tiff:Predictor", 2);
    head.attribute("jpeg:subsampling", "4:4:4");
    if (properties.xResolution > 0 && properties.yResolution > 0) {
        head.attribute("XResolution", static_cast<float>(properties.xResolution));
        head.attribute("YResolution", static_cast<float>(properties.yResolution));
        head.attribute("ResolutionUnit",
                       properties.resolutionUnit.empty() ? "none" : properties.resolutionUnit);
    }
    if (!properties.iccProfile.empty())
        head.attribute(
            "ICCProfile",
            OIIO::TypeDesc(OIIO::TypeDesc::UINT8, static_cast<int>(properties.iccProfile.size())),
            properties.iccProfile.data());
    return head;
}

/// To memory first: the library's writers do not notice every failure to write a file.
bool encode(const Format& format, const HkImage& image, const PictureProperties& properties,
            std::vector<unsigned char>& bytes, std::string& reason) {
    keepToOwnThread();
    bytes.clear();
    OIIO::Filesystem::IOVecOutput memory(bytes);
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(format.name);
    if (!output) {
        reason = OIIO::geterror();
        return false;
    }
    // Only the suffix of the name is looked at.
    const bool done =
        output->set_ioproxy(&memory) &&
        output->open(std::string("frame") + format.suffixes[0],
                     describe(format, image, properties)) &&
        output->write_image(OIIO::TypeUInt8, image.data, image.channels, image.step) &&
        output->close();
    if (!done) reason = output->geterror();
    return done;
}

}  // namespace

bool isWritable(const std::string& fileName) {
    return formatOf(fileName) != nullptr;
}

std::string writableSuffixes() {
    std::string list;
    for (const Format& format : kFormats) {
        if (!list.empty()) list += &format == std::end(kFormats) - 1 ? " or " : ", ";
        list += format.suffixes[0];
    }
    return list;
}

void checkPicture(const std::string& path, const PictureInfo& picture) {
    const Format& format = requireFormat(path);
    if (!holds(format, picture.channels)) {
        const char* content[] = {"a grey picture", "a grey picture with alpha", "a colour picture",
                                 "a colour picture with alpha"};
        const std::string what = picture.channels >= 1 && picture.channels <= 4
                                     ? content[picture.channels - 1]
                                     : std::to_string(picture.channels) + " channels";
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(path) + ": this format cannot hold " + what + "; use .png or .tif");
    }
    if (picture.width > format.largestSide || picture.height > format.largestSide)
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(path) + ": " + std::to_string(picture.width) + " x " +
                             std::to_string(picture.height) +
                             " pixels are more than this format holds; use .tif");
}

std::vector<unsigned char> encodePicture(const std::string& path, const HkImage& image,
                                         const PictureProperties& properties) {
    checkPicture(path, {image.roiWidth, image.roiHeight, image.channels});
    const Format& format = *formatOf(path);
    PictureProperties kept = properties;
    if (!profileFits(kept.iccProfile, image.channels)) kept.iccProfile.clear();
    std::vector<unsigned char> bytes;
    std::string reason;
    try {
        if (encode(format, image, kept, bytes, reason)) return bytes;
        // A writer may find more wrong with a profile than we do; the picture is what matters.
        kept.iccProfile.clear();
        if (encode(format, image, kept, bytes, reason)) return bytes;
    } catch (const std::bad_alloc&) {
        reason = "there is not enough memory";
    }
    throw MediaError(MediaErrorKind::ReadWrite, shown(path) + ": the picture cannot be encoded (" +
                                                    shown(reason.substr(0, reason.find('\n'))) +
                                                    "); use .png or .tif");
}

}  // namespace media
