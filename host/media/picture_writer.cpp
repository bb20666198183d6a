#include "host/media/picture_writer.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

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

/// The channels a colour profile is for stand in its head: "GRAY" or "RGB ". One of another kind
/// (the frame may have lost its colours) is left out.
bool profileFits(const std::vector<unsigned char>& profile, int channels) {
    constexpr std::size_t kHeaderBytes = 128;
    constexpr std::size_t kColourSpaceAt = 16;
    return profile.size() >= kHeaderBytes &&
           std::memcmp(profile.data() + kColourSpaceAt, channels <= 2 ? "GRAY" : "RGB ", 4) == 0;
}

OIIO::ImageSpec describe(const Format& format, const HkImage& image,
                         const PictureProperties& properties) {
    OIIO::ImageSpec spec(image.roiWidth, image.roiHeight, image.channels, OIIO::TypeUInt8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    spec.attribute("DateTime", "");  // else TIFF files would carry the time and never be the same
    if (format.compression) spec.attribute("Compression", format.compression);
    if (spec.get_string_attribute("Compression") == "zip") spec.attribute("tiff:Predictor", 2);
    spec.attribute("jpeg:subsampling", "4:4:4");
    if (properties.xResolution > 0 && properties.yResolution > 0) {
        spec.attribute("XResolution", static_cast<float>(properties.xResolution));
        spec.attribute("YResolution", static_cast<float>(properties.yResolution));
        spec.attribute("ResolutionUnit",
                       properties.resolutionUnit.empty() ? "none" : properties.resolutionUnit);
    }
    if (profileFits(properties.iccProfile, image.channels))
        spec.attribute(
            "ICCProfile",
            OIIO::TypeDesc(OIIO::TypeDesc::UINT8, static_cast<int>(properties.iccProfile.size())),
            properties.iccProfile.data());
    return spec;
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
    const auto fail = [&](const std::string& reason) {
        throw MediaError(MediaErrorKind::ReadWrite, shown(path) +
                                                        ": the picture cannot be encoded (" +
                                                        shown(reason) + "); use .png or .tif");
    };
    try {
        // To memory first: the library's writers do not notice every failure to write a file.
        std::vector<unsigned char> bytes;
        OIIO::Filesystem::IOVecOutput memory(bytes);
        const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(format.name);
        if (!output) fail(OIIO::geterror());
        output->threads(1);  // frames are written side by side
        // Only the suffix of the name is looked at.
        const std::string name = "frame" + suffixOf(fileNameOf(path));
        if (!output->set_ioproxy(&memory) ||
            !output->open(name, describe(format, image, properties)) ||
            !output->write_image(OIIO::TypeUInt8, image.data, image.channels, image.step) ||
            !output->close())
            fail(output->geterror());
        return bytes;
    } catch (const std::bad_alloc&) {
        fail("there is not enough memory");
        throw;
    }
}

}  // namespace media
