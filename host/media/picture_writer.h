#pragma once

#include <string>
#include <vector>

#include "host/media/DeepPicture.h"
#include "host/media/MediaSource.h"

namespace media {

/// True when pictures can be written to files of this name's suffix.
bool isWritable(const std::string& fileName);

/// The suffixes that can be written, for messages: ".png, .tif, ...".
std::string writableSuffixes();

/// Throws MediaError (CannotCreate) when the format of the path's suffix cannot hold the picture.
void checkPicture(const std::string& path, const PictureInfo& picture);

/// Appends the bytes of a picture file to `file`, which is empty, or for TIFF holds pages before
/// this one. Throws MediaError: as checkPicture(), NoMemory, or ReadWrite.
/// The same picture with the same properties always gives the same bytes.
void encodePicture(const std::string& path, const HkImage& image,
                   const PictureProperties& properties, const WriteOptions& options,
                   std::vector<unsigned char>& file);

/// True when deep pictures can be written to files of this name's suffix: .png, .tif, .tiff.
bool isDeepWritable(const std::string& fileName);

/// The bytes of a picture file, always the same ones for the same picture. Throws MediaError as
/// encodePicture(); CannotCreate for a path that is not isDeepWritable().
std::vector<unsigned char> encodeDeepPicture(const std::string& path, const DeepPicture& picture,
                                             const WriteOptions& options);

/// True when files of this name's suffix can hold several pages.
bool holdsPages(const std::string& fileName);

}  // namespace media
