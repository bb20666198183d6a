#include "host/media/MediaSink.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>

#include "host/media/FrameTemplate.h"
#include "host/media/MediaError.h"
#include "host/media/PictureLimits.h"
#include "host/media/atomic_file.h"
#include "host/media/file_names.h"
#include "host/media/picture_writer.h"
#include "host/media/video_formats.h"
#include "host/media/video_sink.h"

namespace media {

namespace {

[[noreturn]] void failCreate(const std::string& path, const std::string& rest) {
    throw MediaError(MediaErrorKind::CannotCreate, shown(path) + ": " + rest);
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// A frame may replace a regular file, but no folder and no device.
void requireReplaceable(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        failCreate(path, S_ISDIR(status.st_mode) ? "a folder has this name; choose another"
                                                 : "this is no regular file; choose another name");
}

/// One file per frame.
class PictureFilesSink : public MediaSink {
public:
    /// newFolder: a folder to be made with the first frame, or empty.
    PictureFilesSink(std::map<std::int64_t, std::string> paths, std::string newFolder,
                     const WriteOptions& options)
        : m_paths(std::move(paths)), m_newFolder(std::move(newFolder)), m_options(options) {}

    std::string path(std::int64_t frame) const override {
        const auto found = m_paths.find(frame);
        if (found == m_paths.end())
            throw MediaError(MediaErrorKind::CannotCreate,
                             "frame " + std::to_string(frame) +
                                 ": the output was opened without this frame; open it again");
        return found->second;
    }

    void check(std::int64_t frame, const PictureInfo& picture) const override {
        checkPicture(path(frame), picture);
    }

    std::function<void()> encode(std::int64_t frame, const HkImage& image,
                                 const PictureProperties& properties) override {
        const std::string file = path(frame);
        std::vector<unsigned char> bytes;
        encodePicture(file, image, properties, m_options, bytes);
        return [this, file, bytes = std::move(bytes)] { writeFile(file, bytes); };
    }

    void write(std::int64_t frame, const DeepPicture& picture) override {
        const std::string file = path(frame);
        writeFile(file, encodeDeepPicture(file, picture, m_options));
    }

private:
    void writeFile(const std::string& file, const std::vector<unsigned char>& bytes) const {
        if (!m_newFolder.empty()) makeFolder();
        writeFileAtomically(file, bytes);
    }

    void makeFolder() const {
        std::error_code error;
        std::filesystem::create_directories(m_newFolder, error);
        if (error.value() == ENOSPC || error.value() == EDQUOT)
            throw MediaError(MediaErrorKind::ReadWrite,
                             shown(m_newFolder) + ": the folder cannot be made (" +
                                 reasonOf(error.value()) + "); " + adviceOnWriting(error.value()));
        if (error)
            failCreate(m_newFolder, "the folder cannot be made (" + reasonOf(error.value()) +
                                        "); choose another name or make it yourself");
    }

    const std::map<std::int64_t, std::string> m_paths;
    const std::string m_newFolder;
    const WriteOptions m_options;
};

/// One file, a page for each frame. It is put together in memory: a page more or less changes what
/// stands before it.
class PagesSink : public MediaSink {
public:
    PagesSink(std::string path, const WriteOptions& options)
        : m_path(std::move(path)), m_options(options) {}

    std::string path(std::int64_t) const override { return m_path; }
    void check(std::int64_t, const PictureInfo& picture) const override {
        checkPicture(m_path, picture);
    }
    std::function<void()> encode(std::int64_t, const HkImage& image,
                                 const PictureProperties& properties) override {
        encodePicture(m_path, image, properties, m_options, m_bytes);
        if (static_cast<std::int64_t>(m_bytes.size()) > kPictureLimits.pageBytes)
            failCreate(
                m_path,
                "the pages are more than the 2 GiB that one file holds; write a numbered sequence");
        return {};
    }
    bool writesInOrder() const override { return true; }
    void finish() override {
        if (!m_bytes.empty()) writeFileAtomically(m_path, m_bytes);
    }

private:
    const std::string m_path;
    const WriteOptions m_options;
    std::vector<unsigned char> m_bytes;
};

void requireFolder(const std::string& folder, const WriteOptions& options) {
    if (!isFolder(folder))
        failCreate(folder, "there is no such folder; make it first or choose another");
    if (!options.onlyNames && access(folder.c_str(), W_OK | X_OK) != 0)
        failCreate(folder, "no file can be created in this folder (" + reasonOf(errno) +
                               "); choose another or change its permissions");
}

/// A folder that is still to be made, with those above it.
void requireCreatableFolder(std::string folder, const WriteOptions& options) {
    struct stat status {};
    while (stat(folder.c_str(), &status) != 0) {
        if (errno != ENOENT)
            failCreate(folder,
                       "the folder cannot be made (" + reasonOf(errno) + "); choose another name");
        folder = folderOf(folder);
    }
    requireFolder(folder, options);
}

/// No two frames go to one file, and no file is one of the source's.
void requireOwnFiles(const std::map<std::int64_t, std::string>& paths, const MediaSource& source) {
    std::map<FileIdentity, std::string> inputs;
    FileIdentity identity;
    for (const std::int64_t frame : source.frames())
        if (const std::string input = source.path(frame); identityOf(input, identity))
            inputs.emplace(identity, input);

    std::map<std::string, std::int64_t> taken;
    std::map<FileIdentity, std::int64_t> takenByLinks;
    const auto refuseSecond = [](const std::string& path, std::int64_t first, std::int64_t second,
                                 const char* advice) {
        failCreate(path, "frames " + std::to_string(first) + " and " + std::to_string(second) +
                             " would both be written to this file; " + advice);
    };
    for (const auto& [frame, path] : paths) {
        const auto [other, isNew] = taken.emplace(path, frame);
        if (!isNew)
            refuseSecond(path, other->second, frame, "use a numbered name such as frame_####.png");
        requireReplaceable(path);
        if (!identityOf(path, identity)) continue;
        const auto [linked, isFirst] = takenByLinks.emplace(identity, frame);
        if (!isFirst)
            refuseSecond(path, linked->second, frame,
                         "their names are links to it: remove the links or choose another folder");
        const auto input = inputs.find(identity);
        if (input != inputs.end())
            failCreate(path, "this is the input " + shown(input->second) +
                                 ", which is never overwritten; choose another name or folder");
    }
}

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

bool canBeWritten(const std::string& fileName, SampleDepth depth) {
    return depth == SampleDepth::Deep ? isDeepWritable(fileName) : isWritable(fileName);
}

std::unique_ptr<MediaSink> openFolder(const std::string& name, const MediaSource& source,
                                      const std::vector<std::int64_t>& frames,
                                      const WriteOptions& options) {
    const std::string folder = withoutTrailingSlashes(name);
    std::map<std::int64_t, std::string> paths;
    for (const std::int64_t frame : frames) {
        const std::string suffix = suffixOf(fileNameOf(source.path(frame)));
        const std::string file = source.frameName(frame) +
                                 (canBeWritten("frame" + suffix, options.depth) ? suffix : ".png");
        paths[frame] = (folder == "/" ? folder : folder + '/') + file;
    }
    const bool exists = isFolder(folder);
    if (exists)
        requireFolder(folder, options);
    else
        requireCreatableFolder(folder, options);
    requireOwnFiles(paths, source);
    return std::make_unique<PictureFilesSink>(std::move(paths), exists ? "" : folder, options);
}

}  // namespace

void MediaSink::write(std::int64_t frame, const DeepPicture&) {
    failCreate(path(frame), "this output was not opened for pictures of 16 bits a sample");
}

void MediaSink::write(std::int64_t frame, const HkImage& image,
                      const PictureProperties& properties) {
    if (const std::function<void()> rest = encode(frame, image, properties)) rest();
}

std::unique_ptr<MediaSink> MediaSink::open(const std::string& output, const MediaSource& source,
                                           const std::vector<std::int64_t>& frames,
                                           const WriteOptions& options) {
    if (output.empty()) failCreate("\"\"", "the output has no name; name a file or a folder");
    const std::string fileName = fileNameOf(output);
    const std::optional<FrameTemplate> pattern = FrameTemplate::parse(output);
    const bool namesFolder = fileName.empty() || (suffixOf(fileName).empty() && !pattern);
    const bool isVideo = !isFolder(output) && !pattern && isWritableVideo(fileName);
    if (!isVideo && options.video.isAnySet())
        failCreate(output, "--codec, --quality and --fps are for videos; name one (" +
                               writableVideoSuffixes() + ") or leave them out");
    if (isFolder(output) || namesFolder) return openFolder(output, source, frames, options);
    const bool isDeep = options.depth == SampleDepth::Deep;
    if (isVideo && !isDeep) {
        requireFolder(folderOf(output), options);
        requireOwnFiles({{frames.front(), output}}, source);
        return openVideoSink(output, source, frames, options.video);
    }

    if (!canBeWritten(fileName, options.depth))
        failCreate(output,
                   isDeep
                       ? "pictures of 16 bits a sample are not written to files of this "
                         "suffix; use .png or .tif, or end the name with / for a folder"
                       : "pictures are not written to files of this suffix; use " +
                             writableSuffixes() + ", " + writableVideoSuffixes() +
                             " for a video or an animation, or end the name with / for a folder");
    std::map<std::int64_t, std::string> paths;
    if (pattern) {
        for (const std::int64_t frame : frames) paths[frame] = pattern->path(frame);
    } else {
        if (frames.size() > 1 && (isDeep || !holdsPages(fileName)))
            failCreate(output, "one file cannot hold " + std::to_string(frames.size()) +
                                   " frames; use a numbered name such as " +
                                   shown(stemOf(fileName)) + "_####" + suffixOf(fileName) + ", " +
                                   (isDeep ? "" : "a .tif, .apng or .webp file, ") + "or a folder");
        paths[frames.front()] = output;
    }
    requireFolder(folderOf(output), options);
    requireOwnFiles(paths, source);
    if (!pattern && frames.size() > 1) return std::make_unique<PagesSink>(output, options);
    return std::make_unique<PictureFilesSink>(std::move(paths), std::string(), options);
}

}  // namespace media
