#pragma once

#include "host/media/formats/Format.h"

namespace media::formats {

/// What OpenImageIO does for us. It brings more than two hundred libraries with it, which take
/// several times as long to load as a picture takes to render: so all that touches it is in
/// libfxpictures.so, which is loaded when the first picture needs it.
struct PictureLibrary {
    /// reader: OpenImageIO's name of the format. mostPerByte: what a byte of the file can hold of
    /// the samples it claims, at the most.
    std::unique_ptr<PictureDecoder> (*open)(const char* reader, const Bytes& file,
                                            double mostPerByte);
    void (*encode)(const char* writer, const PictureRows& rows, const PictureProperties& properties,
                   const std::string& suffix, std::vector<unsigned char>& file);
};

/// Loads it when called for the first time. Throws FormatError when that fails, and tries again
/// with the next call.
const PictureLibrary& pictureLibrary();

}  // namespace media::formats
