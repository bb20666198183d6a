#pragma once

#include <memory>

#include "host/media/formats/Format.h"

/// TIFF, read by libtiff from memory, its errors by what its calls return.
namespace media::formats {

/// `page` counts from 0. Throws FormatError when the head or the page's directory cannot be
/// understood or says what cannot be.
std::unique_ptr<PictureDecoder> openTiff(const Bytes& file, int page);

/// Throws FormatError when the head cannot be understood.
int tiffPageCount(const Bytes& file);

}  // namespace media::formats
