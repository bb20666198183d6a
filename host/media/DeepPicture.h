#pragma once

#include <cstdint>
#include <vector>

namespace media {

/// One channel of 16 bits a sample, such as the numbers of objects: width x height samples, row by
/// row. Written as they are, without any scaling.
struct DeepPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> samples;
};

}  // namespace media
