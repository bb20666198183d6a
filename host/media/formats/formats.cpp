#include <cstring>

#include "host/media/formats/Format.h"

namespace media::formats {

Bytes Bytes::part(std::size_t offset, std::size_t length) const {
    if (offset > size || length > size - offset) refuseDamaged("the file ends too early");
    return {data + offset, length};
}

bool Bytes::startsWith(const char* text, std::size_t length, std::size_t offset) const {
    return size >= offset + length && std::memcmp(data + offset, text, length) == 0;
}

void refuseDamaged(const std::string& what) {
    throw FormatError(MediaErrorKind::InvalidData, "the picture is damaged or cut short (" + what +
                                                       "); copy or export it again");
}

void refuseKind(const std::string& what) {
    throw FormatError(MediaErrorKind::InvalidData, "pictures of this kind are not read (" + what +
                                                       "); convert it to PNG or plain TIFF");
}

std::size_t bytesOf(SampleType type) {
    return type == SampleType::Byte ? 1 : type == SampleType::Word ? 2 : 4;
}

const std::vector<Format>& all() {
    static const std::vector<Format> table = [] {
        std::vector<Format> formats = png();
        formats.push_back(tiff());
        formats.push_back(jpeg());
        for (Format& format : libraryFormats()) formats.push_back(std::move(format));
        return formats;
    }();
    return table;
}

const Format& recognised(const Bytes& file) {
    for (const Format& format : all())
        if (format.recognises(file)) return format;
    if (file.startsWith("GIF8", 4))
        throw FormatError(MediaErrorKind::InvalidData,
                          "GIF pictures are not read; convert it to an animated PNG first: "
                          "ffmpeg -i in.gif -plays 0 out.apng");
    std::string names;
    for (const Format& format : all())
        if (names.find(format.name) == std::string::npos)
            names += (names.empty() ? "" : ", ") + std::string(format.name);
    throw FormatError(MediaErrorKind::InvalidData,
                      "the file is no picture that can be read (" + names +
                          "); check that it is whole, or convert it to PNG or TIFF");
}

}  // namespace media::formats
