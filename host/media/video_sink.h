#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/media/MediaSink.h"

namespace media {

/// A video of these frames of the source, in their order. Whoever calls has seen to it that the
/// file may be written. Throws MediaError (CannotCreate) when the options do not fit the container.
std::unique_ptr<MediaSink> openVideoSink(const std::string& path, const MediaSource& source,
                                         const std::vector<std::int64_t>& frames,
                                         const VideoOptions& options);

}  // namespace media
