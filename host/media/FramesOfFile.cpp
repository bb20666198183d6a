#include "host/media/FramesOfFile.h"

#include <algorithm>
#include <numeric>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

namespace media {

std::string FramesOfFile::path(std::int64_t frame) const {
    requireFrame(frame);
    return m_path;
}

std::string FramesOfFile::frameName(std::int64_t frame) const {
    requireFrame(frame);
    const std::size_t digits = std::max<std::size_t>(4, std::to_string(m_frames.back()).size());
    const std::string number = std::to_string(frame);
    return stemOf(fileNameOf(m_path)) + '_' + std::string(digits - number.size(), '0') + number;
}

PictureInfo FramesOfFile::info(std::int64_t frame) const {
    requireFrame(frame);
    return m_info;
}

void FramesOfFile::setFrameCount(std::size_t count) {
    m_frames.resize(count);
    std::iota(m_frames.begin(), m_frames.end(), 0);
}

void FramesOfFile::requireFrame(std::int64_t frame) const {
    if (frame < 0 || frame > m_frames.back())
        throw MediaError(MediaErrorKind::MissingInput,
                         "frame " + std::to_string(frame) +
                             ": the input has no such frame; its frames are 0 to " +
                             std::to_string(m_frames.back()));
}

}  // namespace media
