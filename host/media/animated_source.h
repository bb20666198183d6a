#pragma once

#include <memory>
#include <string>

#include "host/media/MediaSource.h"

namespace media {

/// The pictures of an animated PNG or WebP file, frames 0 to N - 1 with the times of the file; null
/// when it is a still picture, or cannot be read, which reading it as one will say. Throws
/// MediaError (InvalidData) when the animation is damaged or options ask for a range.
std::unique_ptr<MediaSource> openAnimated(const std::string& path, const ReadOptions& options);

}  // namespace media
