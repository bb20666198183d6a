#pragma once

#include <string>

#include "host/media/VideoOptions.h"
#include "host/media/video_library.h"

namespace media {

/// A codec that videos are written with.
struct VideoCodec {
    const char* name;     ///< as the user says it
    const char* encoder;  ///< as the library does
    int quality;          ///< constant rate factor if the user gives none; -1: it has none

    bool holds(int channels) const;
    bool isOfPictures() const;  ///< its files are animated pictures, not videos
    int largestSide() const;    ///< of the pictures that it can hold

    /// What pictures of this size and so many channels are converted to.
    AVPixelFormat pixelFormat(int width, int height, int channels) const;
};

/// True when the file name's suffix is that of a video that can be written.
bool isWritableVideo(const std::string& fileName);
std::string writableVideoSuffixes();  ///< for messages: ".mp4, .mov, .mkv, .apng or .webp"

/// The name by which the library knows the container of this file.
std::string containerOf(const std::string& path);

/// The codec that is meant. Throws MediaError (CannotCreate) when the container does not take it,
/// or a quality is given for a codec that has none.
const VideoCodec& codecFor(const std::string& path, const VideoOptions& options);

}  // namespace media
