#include "host/media/PictureLimits.h"

namespace media {

namespace {

/// 32,768
std::string grouped(std::int64_t number) {
    std::string digits = std::to_string(number);
    const std::size_t group = 3;
    for (std::size_t at = digits.size(); at > group;) digits.insert(at -= group, 1, ',');
    return digits;
}

}  // namespace

std::string refusalOfSize(int width, int height) {
    const auto refusal = [&](const std::string& limit) {
        return std::to_string(width) + " x " + std::to_string(height) + " pixels are more than " +
               limit + ", a fixed limit; make it smaller";
    };
    if (width > kPictureLimits.side || height > kPictureLimits.side)
        return refusal(grouped(kPictureLimits.side) + " a side");
    if (std::int64_t{width} * height > kPictureLimits.pixels)
        return refusal(grouped(kPictureLimits.pixels));
    return {};
}

}  // namespace media
