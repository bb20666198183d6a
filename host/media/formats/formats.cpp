// The table of all formats.

#include "host/media/formats/Format.h"

namespace media::formats {

const std::vector<Format>& all() {
    static const std::vector<Format> table = [] {
        std::vector<Format> formats = png();
        formats.push_back(tiff());
        formats.push_back(jpeg());
        formats.push_back(webp());
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
