#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"
#include "host/media/VideoOptions.h"
#include "host/media/VideoTrack.h"

namespace media {

/// What a frame will look like, known without decoding its pixels.
struct PictureInfo {
    int width = 0;
    int height = 0;
    int channels = 0;  ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGB and alpha
};

/// What a camera said about a picture: tagged values as EXIF has them, little-endian.
struct CameraData {
    struct Entry {
        unsigned tag;
        unsigned type;
        unsigned count;
        std::vector<unsigned char> bytes;
    };
    std::vector<Entry> entries;  ///< maker, model, author, date ...
    std::vector<Entry> exif;     ///< exposure ...
    std::vector<Entry> gps;

    bool isEmpty() const { return entries.empty() && exif.empty() && gps.empty(); }
};

/// How much coarser than its lightness a JPEG picture stores its colours.
enum class ChromaSubsampling { None, Horizontal, Both };

/// What a picture file carries beside its pixels and what an output should keep.
struct PictureProperties {
    double xResolution = 0;  ///< pixels per resolutionUnit, 0 when unknown
    double yResolution = 0;
    std::string resolutionUnit;  ///< "in", "cm" or empty
    std::vector<unsigned char> iccProfile;
    CameraData cameraData;  ///< without an orientation: the picture is upright
    ChromaSubsampling chromaSubsampling = ChromaSubsampling::None;
    bool hasPagesBehind = false;  ///< the file goes on with another picture
    /// What of the file is not in the picture, for the user: "16 bits cut to 8 ...".
    std::vector<std::string> notes;
};

/// Which sample values become 0 and 255. Alpha always keeps its own range.
struct SampleRange {
    enum Kind {
        Type,   ///< the least and greatest of the type; of floating-point numbers, 0 and 1
        Given,  ///< low and high, in the file's own values
        Auto,   ///< the least and greatest of the source's first frame
        Each    ///< of each frame
    };
    Kind kind = Type;
    double low = 0;
    double high = 0;
};

struct ReadOptions {
    SampleRange range;
};

/// How many bits a sample has that is written.
enum class SampleDepth {
    Usual,  ///< 8: what filters make
    Deep    ///< 16: numbers of objects (DeepPicture), .png and .tif only
};

struct WriteOptions {
    /// Of PNG and TIFF: 0 (none) to 12 (smallest). 1 takes the least time that a frame's filters do
    /// not drown in.
    int compression = 1;
    SampleDepth depth = SampleDepth::Usual;
    VideoOptions video;
    bool onlyNames = false;  ///< nothing will be written: the folder may be one for reading only
};

/// Frames to read: a still, several stills, a numbered sequence, a folder of pictures, a video.
///
/// Paths are the bytes the file system uses. Every operation may be called from several threads at
/// once; ascending frame numbers are the order that is never slow. Everything throws MediaError.
class MediaSource {
public:
    /// Opens what the user named.
    /// One name: an existing file (a still, frame 0; the pages of a TIFF and the pictures of an
    /// animated PNG or WebP file are frames 0, 1, ...); a folder (its pictures in natural order:
    /// a2.png before a10.png, frames 0, 1, ...; hidden files and files without a picture's suffix
    /// are left out); or a template whose file name holds #### or %04d (frame numbers are those in
    /// the names; gaps are allowed; # and % in the folder part mean themselves). A file that exists
    /// is never taken for a template. An existing file that is a video, by its suffix or, where
    /// that is unknown, its content: frames 0, 1, ... as they are shown. Several names: stills,
    /// frames 0, 1, ... in the order given. Only names are looked at, but for the pages of a single
    /// file, and for a video, which is read through once: a damaged picture is noticed by info()
    /// and read(). Of files with several pages among several files the first page is read, which
    /// read() notes. Throws MissingInput when a file or folder does not exist, may not be read, or
    /// holds no picture; InvalidData when what is named is not a kind of input, or is a damaged
    /// video or animation.
    static std::unique_ptr<MediaSource> open(const std::vector<std::string>& inputs,
                                             const ReadOptions& options = ReadOptions());

    virtual ~MediaSource() = default;

    /// The frame numbers that read() accepts, ascending, at least one.
    virtual const std::vector<std::int64_t>& frames() const = 0;

    /// The file a frame comes from (for a video, the video).
    virtual std::string path(std::int64_t frame) const = 0;

    /// A file name, without folder and suffix, for what is made from this frame ("shot_0007").
    virtual std::string frameName(std::int64_t frame) const = 0;

    /// Size and channels of a frame, from the file's head alone.
    virtual PictureInfo info(std::int64_t frame) const = 0;

    /// Decodes a frame to 8 bits a channel, upright (an orientation tag is applied), alpha not
    /// multiplied into the colours. properties, when given, receives the rest. recycled, when
    /// given, is a picture nobody needs any more; its memory is used again where it fits. Throws as
    /// info() does: MissingInput when the frame is not one of frames() or its file cannot be read,
    /// InvalidData when the file is no picture of a format that is read, is cut short, is damaged,
    /// claims more than it can hold or exceeds 32,768 pixels a side or 2^28 pixels, NoMemory,
    /// ReadWrite when the device fails.
    virtual std::unique_ptr<HkImage> read(std::int64_t frame,
                                          PictureProperties* properties = nullptr,
                                          std::unique_ptr<HkImage> recycled = nullptr) const = 0;

    /// Says that a frame will be read soon, so that the system can fetch its file meanwhile.
    /// Returns at once, never throws; any number does.
    virtual void expect(std::int64_t) const {}

    /// True when read() must be called in ascending order of frames, one call at a time (an
    /// animation).
    virtual bool readsInOrder() const { return false; }

    /// What the video or animation says of itself; null when the frames are still pictures.
    virtual const VideoTrack* videoTrack() const { return nullptr; }

    /// What of the input is not in its frames, for the user, a line each.
    virtual std::vector<std::string> notices() const { return {}; }

protected:
    MediaSource() = default;
    MediaSource(const MediaSource&) = delete;
    MediaSource& operator=(const MediaSource&) = delete;
};

}  // namespace media
