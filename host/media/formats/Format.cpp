#include "host/media/formats/Format.h"

#include <cstring>

namespace media::formats {

Bytes Bytes::part(std::size_t offset, std::size_t length) const {
    if (offset > size || length > size - offset) refuseDamaged("the file ends too early");
    return {data + offset, length};
}

bool Bytes::startsWith(const char* text, std::size_t length, std::size_t offset) const {
    return size >= offset + length && std::memcmp(data + offset, text, length) == 0;
}

void refuseDamaged(const std::string& what) {
    throw FormatError(MediaErrorKind::InvalidData, "the picture is damaged or cut short (" + what +
                                                       "); copy or export it again");
}

void refuseKind(const std::string& what) {
    throw FormatError(MediaErrorKind::InvalidData, "pictures of this kind are not read (" + what +
                                                       "); convert it to PNG or plain TIFF");
}

std::size_t bytesOf(SampleType type) {
    return type == SampleType::Byte ? 1 : type == SampleType::Word ? 2 : 4;
}

}  // namespace media::formats
