#include "host/media/MediaSink.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>

#include "host/media/FrameTemplate.h"
#include "host/media/MediaError.h"
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
    PictureFilesSink(std::map<std::int64_t, std::string> paths, std::string newFolder)
        : m_paths(std::move(paths)), m_newFolder(std::move(newFolder)) {}

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

    void write(std::int64_t frame, const HkImage& image,
               const PictureProperties& properties) override {
        const std::string file = path(frame);
        const std::vector<unsigned char> bytes = encodePicture(file, image, properties);
        if (!m_newFolder.empty()) makeFolder();
        writeFileAtomically(file, bytes);
    }

private:
    void makeFolder() const {
        std::error_code error;
        std::filesystem::create_directories(m_newFolder, error);
        if (error)
            failCreate(m_newFolder, "the folder cannot be made (" + reasonOf(error.value()) +
                                        "); choose another name or make it yourself");
    }

    const std::map<std::int64_t, std::string> m_paths;
    const std::string m_newFolder;
};

void requireWritableFolder(const std::string& folder) {
    if (!isFolder(folder))
        failCreate(folder, "there is no such folder; make it first or choose another");
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        failCreate(folder, "no file can be created in this folder (" + reasonOf(errno) +
                               "); choose another or change its permissions");
}

/// A folder that is still to be made, with those above it.
void requireCreatableFolder(std::string folder) {
    struct stat status {};
    while (stat(folder.c_str(), &status) != 0) {
        if (errno != ENOENT)
            failCreate(folder,
                       "the folder cannot be made (" + reasonOf(errno) + "); choose another name");
        folder = folderOf(folder);
    }
    requireWritableFolder(folder);
}

/// No two frames go to one file, and no file is one of the source's.
void requireOwnFiles(const std::map<std::int64_t, std::string>& paths, const MediaSource& source) {
    std::map<FileIdentity, std::string> inputs;
    FileIdentity identity;
    for (const std::int64_t frame : source.frames())
        if (const std::string input = source.path(frame); identityOf(input, identity))
            inputs.emplace(identity, input);

    std::map<std::string, std::int64_t> taken;
    for (const auto& [frame, path] : paths) {
        const auto [other, isNew] = taken.emplace(path, frame);
        if (!isNew)
            failCreate(path, "frames " + std::to_string(other->second) + " and " +
                                 std::to_string(frame) +
                                 " would both be written to this file; use a numbered name such "
                                 "as frame_####.png");
        requireReplaceable(path);
        if (!identityOf(path, identity)) continue;
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

std::unique_ptr<MediaSink> openFolder(const std::string& name, const MediaSource& source,
                                      const std::vector<std::int64_t>& frames) {
    const std::string folder = withoutTrailingSlashes(name);
    std::map<std::int64_t, std::string> paths;
    for (const std::int64_t frame : frames) {
        const std::string suffix = suffixOf(fileNameOf(source.path(frame)));
        const std::string file =
            source.frameName(frame) + (isWritable("frame" + suffix) ? suffix : ".png");
        paths[frame] = (folder == "/" ? folder : folder + '/') + file;
    }
    const bool exists = isFolder(folder);
    if (exists)
        requireWritableFolder(folder);
    else
        requireCreatableFolder(folder);
    requireOwnFiles(paths, source);
    return std::make_unique<PictureFilesSink>(std::move(paths), exists ? "" : folder);
}

}  // namespace

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
    if (isFolder(output) || namesFolder) return openFolder(output, source, frames);
    if (isVideo) {
        requireWritableFolder(folderOf(output));
        requireOwnFiles({{frames.front(), output}}, source);
        return openVideoSink(output, source, frames, options.video);
    }

    if (!isWritable(fileName))
        failCreate(output, "pictures are not written to files of this suffix; use " +
                               writableSuffixes() + ", " + writableVideoSuffixes() +
                               " for a video, or end the name with / for a folder");
    std::map<std::int64_t, std::string> paths;
    if (pattern) {
        for (const std::int64_t frame : frames) paths[frame] = pattern->path(frame);
    } else {
        if (frames.size() > 1)
            failCreate(output, "one file cannot hold " + std::to_string(frames.size()) +
                                   " frames; use a numbered name such as " +
                                   shown(stemOf(fileName)) + "_####" + suffixOf(fileName) +
                                   ", or a folder");
        for (const std::int64_t frame : frames) paths[frame] = output;
    }
    requireWritableFolder(folderOf(output));
    requireOwnFiles(paths, source);
    return std::make_unique<PictureFilesSink>(std::move(paths), std::string());
}

}  // namespace media
