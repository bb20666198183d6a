#include "host/render/FileClaims.h"

#include <filesystem>
#include <system_error>

#include "host/media/file_names.h"
#include "host/render/ExitCode.h"

namespace render {

namespace {

/// The same for all names of one file, also when it is still to be made.
std::string keyOf(const std::string& path) {
    media::FileIdentity identity;
    const auto words = [&identity] {
        return std::to_string(identity.first) + ':' + std::to_string(identity.second);
    };
    if (media::identityOf(path, identity)) return words();
    const std::string folder = media::folderOf(path);
    const std::string name = '/' + media::fileNameOf(path);
    if (media::identityOf(folder, identity)) return words() + name;
    std::error_code ignored;  // opening it will say what is wrong with the folder
    return std::filesystem::weakly_canonical(std::filesystem::absolute(folder), ignored).string() +
           name;
}

}  // namespace

FileClaims::FileClaims(const media::MediaSource& source) {
    for (const std::int64_t frame : source.frames())
        m_purposes.emplace(keyOf(source.path(frame)), "an input");
}

void FileClaims::claim(const std::string& path, const std::string& purpose) {
    const auto [known, isNew] = m_purposes.emplace(keyOf(path), purpose);
    if (!isNew)
        throw UsageError(path + " is " + known->second + " and cannot be " + purpose +
                         " as well; name another file");
}

void FileClaims::claim(const media::MediaSink& sink, const std::vector<std::int64_t>& frames,
                       const std::string& purpose) {
    std::string before;  // a file of pages has all of them
    for (const std::int64_t frame : frames) {
        const std::string path = sink.path(frame);
        if (path != before) claim(path, purpose);
        before = path;
    }
}

}  // namespace render
