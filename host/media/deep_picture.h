#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace media {

/// One channel of 16 bits a sample, such as the numbers of objects: width x height samples, row by
/// row. Written as they are, without any scaling.
struct DeepPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> samples;
};

/// True when deep pictures can be written to files of this name's suffix: .png, .tif, .tiff.
bool isDeepWritable(const std::string& fileName);

/// The bytes of a picture file, always the same ones for the same picture. Throws MediaError:
/// CannotCreate when the path's suffix is another one, ReadWrite when the picture cannot be
/// encoded.
std::vector<unsigned char> encodeDeepPicture(const std::string& path, const DeepPicture& picture);

}  // namespace media
