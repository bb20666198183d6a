#include "host/media/MediaSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "host/media/FrameTemplate.h"
#include "host/media/MediaError.h"
#include "host/media/animated_source.h"
#include "host/media/file_names.h"
#include "host/media/picture_reader.h"
#include "host/media/video_source.h"

namespace media {

namespace {

[[noreturn]] void failMissing(const std::string& path, const std::string& rest) {
    throw MediaError(MediaErrorKind::MissingInput, shown(path) + ": " + rest);
}

/// One file per frame, or one file whose pages are the frames.
class PictureFiles : public MediaSource {
public:
    explicit PictureFiles(const ReadOptions& options) : m_options(options) {}

    void add(std::int64_t frame, const std::string& path) {
        m_frames.push_back(frame);
        m_paths.push_back(path);
    }
    /// The first file's pages in place of the files.
    void takePages(int count) {
        m_paths.resize(1);
        m_frames.clear();
        for (int page = 0; page < count; ++page) m_frames.push_back(page);
    }

    void notice(std::string text) { m_notices.push_back(std::move(text)); }

    const std::vector<std::int64_t>& frames() const override { return m_frames; }
    std::vector<std::string> notices() const override { return m_notices; }
    std::string path(std::int64_t frame) const override { return placeOf(frame).path; }
    std::string frameName(std::int64_t frame) const override {
        const std::string name = stemOf(fileNameOf(placeOf(frame).path));
        return hasPages() ? name + '_' + FrameTemplate::parse("####")->fileName(frame) : name;
    }
    PictureInfo info(std::int64_t frame) const override {
        const Place place = placeOf(frame);
        return readPictureInfo(place.path, place.page);
    }
    std::unique_ptr<HkImage> read(std::int64_t frame, PictureProperties* properties,
                                  std::unique_ptr<HkImage> recycled) const override {
        const Place place = placeOf(frame);
        std::unique_ptr<HkImage> image =
            readPicture(place.path, place.page, range(), properties, std::move(recycled));
        if (properties && !hasPages() && properties->hasPagesBehind)
            properties->notes.push_back(
                "only the first of several pages is read; a file of pages or an animation "
                "can be the only input");
        return image;
    }
    void expect(std::int64_t frame) const override {
        const auto found = std::lower_bound(m_frames.begin(), m_frames.end(), frame);
        if (found == m_frames.end() || *found != frame || hasPages()) return;
        const std::string& file = m_paths[static_cast<std::size_t>(found - m_frames.begin())];
        const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0) return;
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_WILLNEED);
        ::close(descriptor);
    }

private:
    struct Place {
        const std::string& path;
        int page;
    };
    bool hasPages() const { return m_paths.size() < m_frames.size(); }

    Place placeOf(std::int64_t frame) const {
        const auto found = std::lower_bound(m_frames.begin(), m_frames.end(), frame);
        if (found == m_frames.end() || *found != frame)
            throw MediaError(MediaErrorKind::MissingInput,
                             "frame " + std::to_string(frame) +
                                 ": the input has no such frame; its frames are " +
                                 std::to_string(m_frames.front()) + " to " +
                                 std::to_string(m_frames.back()) +
                                 (static_cast<std::int64_t>(m_frames.size()) - 1 <
                                          m_frames.back() - m_frames.front()
                                      ? " with gaps"
                                      : ""));
        const auto index = static_cast<std::size_t>(found - m_frames.begin());
        return hasPages() ? Place{m_paths[0], static_cast<int>(index)} : Place{m_paths[index], 0};
    }

    /// The range asked for; of the first frame only when it is looked at for the first time.
    const SampleRange& range() const {
        if (m_options.range.kind != SampleRange::Auto) return m_options.range;
        std::call_once(m_rangeKnown, [&] { m_firstRange = sampleRangeOf(m_paths.front(), 0); });
        return m_firstRange;
    }

    std::vector<std::int64_t> m_frames;  // ascending
    std::vector<std::string> m_paths;    // of the same length; one when its pages are the frames
    std::vector<std::string> m_notices;
    const ReadOptions m_options;
    mutable std::once_flag m_rangeKnown;
    mutable SampleRange m_firstRange;
};

std::string joined(const std::string& folder, const std::string& name) {
    return folder.empty() || folder.back() == '/' ? folder + name : folder + '/' + name;
}

std::unique_ptr<PictureFiles> openFolder(const std::string& folder, const ReadOptions& options) {
    std::vector<std::string> names = filesIn(folder);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const std::string& name) { return !hasPictureSuffix(name); }),
                names.end());
    if (names.empty())
        failMissing(folder, "the folder holds no pictures (.png, .tif, .jpg, ...); name another");
    std::sort(names.begin(), names.end(), naturalLess);
    auto source = std::make_unique<PictureFiles>(options);
    for (const std::string& name : names)
        source->add(static_cast<std::int64_t>(source->frames().size()), joined(folder, name));
    return source;
}

/// What to say of numbers, ascending, of which some are left out; empty: none are.
std::string gapsText(const std::vector<std::int64_t>& numbers) {
    const std::uint64_t missing = static_cast<std::uint64_t>(numbers.back()) -
                                  static_cast<std::uint64_t>(numbers.front()) + 1 - numbers.size();
    if (missing == 0) return {};
    std::int64_t first = numbers.front();
    for (std::size_t i = 0; numbers[i] == first; ++i) ++first;
    return std::to_string(missing) + " of the numbers " + std::to_string(numbers.front()) + " to " +
           std::to_string(numbers.back()) +
           (missing == 1 ? " has no file: " : " have no file, the first is ") +
           std::to_string(first);
}

std::unique_ptr<PictureFiles> openTemplate(const std::string& path, const FrameTemplate& pattern,
                                           const ReadOptions& options) {
    std::vector<std::pair<std::int64_t, std::string>> found;
    for (const std::string& name : filesIn(pattern.folder().empty() ? "." : pattern.folder()))
        if (const std::optional<std::int64_t> frame = pattern.frameOf(name))
            found.emplace_back(*frame, pattern.folder() + name);
    if (found.empty())
        failMissing(path, "no file has such a name; frame 1 would be " +
                              shown(pattern.fileName(1)) + "; check the folder and the digits");
    std::sort(found.begin(), found.end());
    auto source = std::make_unique<PictureFiles>(options);
    for (const auto& [frame, file] : found) source->add(frame, file);
    if (const std::string gaps = gapsText(source->frames()); !gaps.empty())
        source->notice(shown(path) + ": " + gaps);
    return source;
}

void requireFile(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        failMissing(path, errno == ENOENT ? "there is no such file; check the name and the folder"
                                          : "the file cannot be read (" + reasonOf(errno) +
                                                "); check its path and permissions");
    if (!S_ISREG(status.st_mode))
        throw MediaError(MediaErrorKind::InvalidData,
                         shown(path) + (S_ISDIR(status.st_mode)
                                            ? ": a folder can be the only input; give it alone"
                                            : ": this is no regular file; copy what it delivers "
                                              "to a file first"));
}

std::unique_ptr<PictureFiles> openStills(const std::vector<std::string>& paths,
                                         const ReadOptions& options) {
    auto source = std::make_unique<PictureFiles>(options);
    for (const std::string& path : paths) {
        struct stat status {};
        if (paths.size() > 1 && stat(path.c_str(), &status) != 0 && FrameTemplate::parse(path))
            throw MediaError(
                MediaErrorKind::InvalidData,
                shown(path) + ": a numbered sequence can be the only input; give it alone");
        requireFile(path);
        if (paths.size() > 1 && !hasPictureSuffix(fileNameOf(path)) && isVideo(path))
            throw MediaError(MediaErrorKind::InvalidData,
                             shown(path) + ": a video can be the only input; give it alone");
        source->add(static_cast<std::int64_t>(source->frames().size()), path);
    }
    if (paths.size() == 1)
        if (const int pages = pageCountOf(paths.front()); pages > 1) source->takePages(pages);
    return source;
}

std::unique_ptr<MediaSource> openOnlyVideo(const std::string& path, const ReadOptions& options) {
    if (options.range.kind != SampleRange::Type)
        throw MediaError(MediaErrorKind::InvalidData,
                         shown(path) +
                             ": --range is for pictures; the levels of a video are those "
                             "that it is tagged with, so leave it out");
    return openVideo(path);
}

}  // namespace

std::unique_ptr<MediaSource> MediaSource::open(const std::vector<std::string>& inputs,
                                               const ReadOptions& options) {
    if (inputs.empty())
        throw MediaError(MediaErrorKind::MissingInput,
                         "no input is given; name a picture, a sequence or a folder");
    if (inputs.size() > 1) return openStills(inputs, options);

    const std::string& path = inputs.front();
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
        if (isVideo(path)) return openOnlyVideo(path, options);
        if (std::unique_ptr<MediaSource> animated = openAnimated(path, options)) return animated;
    }
    if (stat(path.c_str(), &status) == 0)
        return S_ISDIR(status.st_mode) ? openFolder(path, options) : openStills(inputs, options);
    if (errno == ENOENT)
        if (const std::optional<FrameTemplate> pattern = FrameTemplate::parse(path))
            return openTemplate(path, *pattern, options);
    return openStills(inputs, options);
}

}  // namespace media
