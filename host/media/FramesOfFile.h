#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/media/MediaSource.h"

namespace media {

/// What a video and an animation have in common: one file, frames 0 to N - 1 of one size, times.
class FramesOfFile : public MediaSource {
public:
    explicit FramesOfFile(std::string path) : m_path(std::move(path)) {}

    const std::vector<std::int64_t>& frames() const override { return m_frames; }
    std::string path(std::int64_t frame) const override;
    /// The file's name and the number, in as many digits as the last one has, at least four.
    std::string frameName(std::int64_t frame) const override;
    PictureInfo info(std::int64_t frame) const override;
    const VideoTrack* videoTrack() const override { return &m_track; }

protected:
    void setFrameCount(std::size_t count);
    void requireFrame(std::int64_t frame) const;

    const std::string m_path;
    PictureInfo m_info;
    VideoTrack m_track;

private:
    std::vector<std::int64_t> m_frames;
};

}  // namespace media
