#include "host/media/MediaSource.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "host/media/FrameTemplate.h"
#include "host/media/MediaError.h"
#include "host/media/file_names.h"
#include "host/media/picture_reader.h"
#include "host/media/video_source.h"

namespace media {

namespace {

[[noreturn]] void failMissing(const std::string& path, const std::string& rest) {
    throw MediaError(MediaErrorKind::MissingInput, shown(path) + ": " + rest);
}

/// One file per frame.
class PictureFiles : public MediaSource {
public:
    void add(std::int64_t frame, const std::string& path) {
        m_frames.push_back(frame);
        m_paths.push_back(path);
    }

    const std::vector<std::int64_t>& frames() const override { return m_frames; }
    std::string path(std::int64_t frame) const override { return pathOf(frame); }
    std::string frameName(std::int64_t frame) const override {
        return stemOf(fileNameOf(pathOf(frame)));
    }
    PictureInfo info(std::int64_t frame) const override { return readPictureInfo(pathOf(frame)); }
    std::unique_ptr<HkImage> read(std::int64_t frame,
                                  PictureProperties* properties) const override {
        return readPicture(pathOf(frame), properties);
    }

private:
    const std::string& pathOf(std::int64_t frame) const {
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
        return m_paths[static_cast<std::size_t>(found - m_frames.begin())];
    }

    std::vector<std::int64_t> m_frames;  // ascending
    std::vector<std::string> m_paths;    // of the same length
};

std::string joined(const std::string& folder, const std::string& name) {
    return folder.empty() || folder.back() == '/' ? folder + name : folder + '/' + name;
}

std::unique_ptr<PictureFiles> openFolder(const std::string& folder) {
    std::vector<std::string> names = filesIn(folder);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const std::string& name) { return !hasPictureSuffix(name); }),
                names.end());
    if (names.empty())
        failMissing(folder, "the folder holds no pictures (.png, .tif, .jpg, ...); name another");
    std::sort(names.begin(), names.end(), naturalLess);
    auto source = std::make_unique<PictureFiles>();
    for (const std::string& name : names)
        source->add(static_cast<std::int64_t>(source->frames().size()), joined(folder, name));
    return source;
}

std::unique_ptr<PictureFiles> openTemplate(const std::string& path, const FrameTemplate& pattern) {
    std::vector<std::pair<std::int64_t, std::string>> found;
    for (const std::string& name : filesIn(pattern.folder().empty() ? "." : pattern.folder()))
        if (const std::optional<std::int64_t> frame = pattern.frameOf(name))
            found.emplace_back(*frame, pattern.folder() + name);
    if (found.empty())
        failMissing(path, "no file has such a name; frame 1 would be " +
                              shown(pattern.fileName(1)) + "; check the folder and the digits");
    std::sort(found.begin(), found.end());
    auto source = std::make_unique<PictureFiles>();
    for (const auto& [frame, file] : found) source->add(frame, file);
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

std::unique_ptr<PictureFiles> openStills(const std::vector<std::string>& paths) {
    auto source = std::make_unique<PictureFiles>();
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
    return source;
}

}  // namespace

std::unique_ptr<MediaSource> MediaSource::open(const std::vector<std::string>& inputs) {
    if (inputs.empty())
        throw MediaError(MediaErrorKind::MissingInput,
                         "no input is given; name a picture, a sequence or a folder");
    if (inputs.size() > 1) return openStills(inputs);

    const std::string& path = inputs.front();
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && isVideo(path))
        return openVideo(path);
    if (stat(path.c_str(), &status) == 0)
        return S_ISDIR(status.st_mode) ? openFolder(path) : openStills(inputs);
    if (errno == ENOENT)
        if (const std::optional<FrameTemplate> pattern = FrameTemplate::parse(path))
            return openTemplate(path, *pattern);
    return openStills(inputs);
}

}  // namespace media
