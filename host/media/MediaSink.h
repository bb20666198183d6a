#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/media/MediaSource.h"

namespace media {

/// Where frames are written: a still, a numbered sequence, a folder, a video.
///
/// A frame's file is complete or absent: it is written under another name in the same folder,
/// flushed to the disk and renamed; a file of that name that was there before is replaced only
/// then. Different frames may be written from several threads at once. Everything throws
/// MediaError.
class MediaSink {
public:
    /// Opens what the user named for the frames of source that are to be written. Nothing is
    /// created yet.
    /// A name that is a folder, ends in /, or has no suffix: a folder, one file per frame named as
    /// source.frameName() says, with the suffix of its input where that can be written, else .png;
    /// the folder is made with the first frame. A name whose file part holds #### or %04d: a
    /// template filled with the frame number. A name with a video's suffix: a video. Any other
    /// name: one still, for exactly one frame. The suffix decides the format. Throws CannotCreate
    /// when the suffix is not one that can be written, several frames would go to one file, a file
    /// written would be one of the source's (whatever road leads to it: links,
    /// "./", case), or the folder is missing or may not be written to.
    static std::unique_ptr<MediaSink> open(const std::string& output, const MediaSource& source,
                                           const std::vector<std::int64_t>& frames,
                                           const WriteOptions& options = WriteOptions());

    virtual ~MediaSink() = default;

    /// What of the source will not be in the output, for the user, a line each.
    virtual std::vector<std::string> notices() const { return {}; }

    /// The file write() makes for this frame (for a video, the video).
    virtual std::string path(std::int64_t frame) const = 0;

    /// Throws CannotCreate, naming the nearest valid choice, when the frame's format cannot hold
    /// pictures of so many channels or of this size. write() checks the same.
    virtual void check(std::int64_t frame, const PictureInfo& picture) const = 0;

    /// Writes the region of image as this frame. Throws CannotCreate or ReadWrite; nothing is left
    /// behind then, and a file that was there before is as it was.
    virtual void write(std::int64_t frame, const HkImage& image,
                       const PictureProperties& properties = PictureProperties()) = 0;

    /// Says that this frame, one of those the sink was opened for, will not be written. A video may
    /// be waiting for it: write() returns when all frames before were written or left out, or few
    /// enough are missing.
    virtual void leaveOut(std::int64_t) {}

    /// Ends the output. Nothing may be written afterwards. Without it, a video is not there. Throws
    /// as write() does.
    virtual void finish() {}

protected:
    MediaSink() = default;
    MediaSink(const MediaSink&) = delete;
    MediaSink& operator=(const MediaSink&) = delete;
};

}  // namespace media
