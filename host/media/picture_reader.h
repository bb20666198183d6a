#pragma once

#include <memory>
#include <string>

#include "host/media/MediaSource.h"

namespace media {

/// Suffixes, in lower case with their point, of the picture files a folder is searched for.
bool hasPictureSuffix(const std::string& fileName);

/// What MediaSource::info() and read() do, for one file. Both throw MediaError.
PictureInfo readPictureInfo(const std::string& path);
std::unique_ptr<HkImage> readPicture(const std::string& path, PictureProperties* properties);

}  // namespace media
