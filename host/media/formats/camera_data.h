#pragma once

#include <vector>

#include "host/media/formats/Format.h"

/// Directories of tagged values as TIFF files and EXIF blocks have them.
namespace media::formats {

/// What a TIFF-structured block (a TIFF file, or the EXIF block of another) says about the camera:
/// maker, model, author, date, and the EXIF and GPS directories. Damaged entries are left out.
CameraData cameraDataOf(const Bytes& block);

/// The orientation in the first directory of such a block, 1 where it says none.
int orientationOf(const Bytes& block);

/// An EXIF block of it, its orientation upright; empty when there is nothing in it.
std::vector<unsigned char> asExif(const CameraData& data);

/// The values of one tag, in little-endian order.
CameraData::Entry shortsEntry(unsigned tag, const std::vector<unsigned>& values);
CameraData::Entry longsEntry(unsigned tag, const std::vector<unsigned>& values);
CameraData::Entry rationalEntry(unsigned tag, double value);
CameraData::Entry bytesEntry(unsigned tag, const std::vector<unsigned char>& values);

/// Appends a little-endian directory, with the EXIF and GPS directories of `data` and its other
/// entries, and the place for the offset of the next. Offsets count from `origin`.
struct Directory {
    std::size_t begin;  ///< in block
    std::size_t next;   ///< where in block the offset of the next belongs
};
Directory putDirectory(std::vector<CameraData::Entry> entries, const CameraData& data,
                       std::size_t origin, std::vector<unsigned char>& block);

void put16(unsigned value, std::vector<unsigned char>& block);
void put32(unsigned value, std::vector<unsigned char>& block);
void set32(unsigned value, std::size_t at, std::vector<unsigned char>& block);

}  // namespace media::formats
