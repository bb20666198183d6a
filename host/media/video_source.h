#pragma once

#include <memory>
#include <string>

#include "host/media/MediaSource.h"

namespace media {

/// True when a file is taken for a video: by its suffix, or, where the suffix is neither a video's
/// nor a picture's, by what is in it.
bool isVideo(const std::string& path);

/// The frames of a video: 0 to N - 1, in the order in which they are shown. The file is read
/// once to index it; each frame is then the same whatever was read before. Throws MediaError:
/// InvalidData when the file has no video track, is damaged or is cut short.
std::unique_ptr<MediaSource> openVideo(const std::string& path);

}  // namespace media
