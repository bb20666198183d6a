#pragma once

#include <memory>
#include <string>

#include "host/media/MediaSource.h"

namespace media {

/// Suffixes, in lower case with their point, of the picture files a folder is searched for.
bool hasPictureSuffix(const std::string& fileName);

/// What MediaSource::info() and read() do, for one page of a file. All throw MediaError.
PictureInfo readPictureInfo(const std::string& path, int page);
std::unique_ptr<HkImage> readPicture(const std::string& path, int page, const SampleRange& range,
                                     PictureProperties* properties,
                                     std::unique_ptr<HkImage> recycled);

/// How many pages a file has; 1 also for a file that cannot be read, which reading it will say.
int pageCountOf(const std::string& path);

/// The pictures of an animated file, whole ones, in their order. One thread at a time. All throw
/// MediaError.
class PictureAnimation {
public:
    /// Null when the file does not move, or cannot be read, which reading it will say.
    static std::unique_ptr<PictureAnimation> open(const std::string& path);

    virtual ~PictureAnimation() = default;
    virtual PictureInfo info() const = 0;
    virtual std::vector<Ratio> delays() const = 0;  ///< seconds that each picture is shown
    virtual PictureProperties properties() const = 0;

    /// Ascending numbers are fast; going back begins with the first picture.
    virtual std::unique_ptr<HkImage> read(std::size_t number,
                                          std::unique_ptr<HkImage> recycled) = 0;
};

/// The range that a page's own least and greatest samples are.
SampleRange sampleRangeOf(const std::string& path, int page);

}  // namespace media
