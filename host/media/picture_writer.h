#pragma once

#include <string>
#include <vector>

#include "host/media/MediaSource.h"

namespace media {

/// True when pictures can be written to files of this name's suffix.
bool isWritable(const std::string& fileName);

/// The suffixes that can be written, for messages: ".png, .tif, ...".
std::string writableSuffixes();

/// Throws MediaError (CannotCreate) when the format of the path's suffix cannot hold the picture.
void checkPicture(const std::string& path, const PictureInfo& picture);

/// The bytes of a picture file. Throws MediaError: as checkPicture(), or ReadWrite.
/// The same picture always gives the same bytes.
std::vector<unsigned char> encodePicture(const std::string& path, const HkImage& image,
                                         const PictureProperties& properties);

}  // namespace media
