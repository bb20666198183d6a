#pragma once

#include <memory>
#include <string>

#include "host/media/MediaSource.h"

namespace media {

/// Suffixes, in lower case with their point, of the picture files a folder is searched for.
bool hasPictureSuffix(const std::string& fileName);

/// What MediaSource::info() and read() do, for one page of a file. All throw MediaError.
PictureInfo readPictureInfo(const std::string& path, int page);
std::unique_ptr<HkImage> readPicture(const std::string& path, int page, const SampleRange& range,
                                     PictureProperties* properties,
                                     std::unique_ptr<HkImage> recycled);

/// How many pages a file has; 1 also for a file that cannot be read, which reading it will say.
int pageCountOf(const std::string& path);

/// The range that a page's own least and greatest samples are.
SampleRange sampleRangeOf(const std::string& path, int page);

}  // namespace media
