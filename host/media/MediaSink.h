#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/media/DeepPicture.h"
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
    /// template filled with the frame number. A name with a video's suffix, .apng or .webp: a video
    /// or an animated picture. Any other name: one still for one frame, or a TIFF file of one page
    /// for each of several. The suffix decides the format. Deep pictures go to .png and .tif only,
    /// one to a file. Throws CannotCreate when the suffix is not one that can be written, several
    /// frames would go to one file, a file written would be one of the source's (whatever road
    /// leads to it: links,
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
    void write(std::int64_t frame, const HkImage& image,
               const PictureProperties& properties = PictureProperties());

    /// The same for a sink that was opened for deep pictures; others throw CannotCreate.
    virtual void write(std::int64_t frame, const DeepPicture& picture);

    /// The part of write() that is work for the processor. What is left, waiting for the disk, is
    /// the function returned, to be called once, on any thread; empty when nothing is left.
    virtual std::function<void()> encode(std::int64_t frame, const HkImage& image,
                                         const PictureProperties& properties) = 0;

    /// True when encode() must be called in ascending order of frames, one call at a time (a video,
    /// a file of pages).
    virtual bool writesInOrder() const { return false; }

    /// Ends the output (a video's trailer). Nothing may be written afterwards. Without it, such an
    /// output is not there. Throws as write() does.
    virtual void finish() {}

protected:
    MediaSink() = default;
    MediaSink(const MediaSink&) = delete;
    MediaSink& operator=(const MediaSink&) = delete;
};

}  // namespace media
