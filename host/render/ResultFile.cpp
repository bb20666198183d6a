#include "host/render/ResultFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "host/media/atomic_file.h"
#include "host/media/file_names.h"
#include "host/render/ExitCode.h"

namespace render {

namespace fs = std::filesystem;

namespace {

/// The first bytes of a file, as many as fit a line or two, without blanks and line ends.
std::string beginningOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(256, '\0');
    file.read(&text[0], static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    std::string dense;
    for (const char c : text)
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n') dense += c;
    return dense;
}

bool isSameFolder(const std::string& a, const std::string& b) {
    std::error_code ignored;  // a road that leads nowhere is no folder
    return fs::weakly_canonical(fs::absolute(a), ignored) ==
           fs::weakly_canonical(fs::absolute(b), ignored);
}

}  // namespace

ResultFile::ResultFile(const std::string& option, const std::string& path,
                       const std::string& beginning, const std::vector<std::string>& foldersToCome)
    : m_option(option), m_path(path) {
    if (isStandardOutput()) return;
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) refuse("this is no regular file");
        checkExisting(beginning);
    }
    const std::string folder = media::folderOf(path);
    if (stat(folder.c_str(), &status) != 0) {
        const int reason = errno;
        const auto isFolder = [&](const std::string& other) { return isSameFolder(folder, other); };
        if (std::any_of(foldersToCome.begin(), foldersToCome.end(), isFolder)) return;
        refuse("its folder: " + media::reasonOf(reason));
    }
    if (!S_ISDIR(status.st_mode)) refuse(media::reasonOf(ENOTDIR));
    if (access(folder.c_str(), W_OK | X_OK) != 0) refuse("its folder: " + media::reasonOf(errno));
}

void ResultFile::write(const std::string& text) const {
    if (isStandardOutput()) {
        std::fwrite(text.data(), 1, text.size(),
                    stdout);  // whoever ends the program looks for errors
        return;
    }
    // The folder may have been left unmade, because no frame was written.
    std::error_code ignored;  // writing says why it cannot be
    fs::create_directories(media::folderOf(m_path), ignored);
    media::writeFileAtomically(m_path, std::vector<unsigned char>(text.begin(), text.end()));
}

void ResultFile::refuse(const std::string& why) const {
    throw CommandError(CannotCreate, m_option + ": " + m_path + " cannot be written (" + why +
                                         "); name another file, or - for standard output");
}

void ResultFile::checkExisting(const std::string& beginning) const {
    const std::string found = beginningOf(m_path);
    if (!found.empty() && found.compare(0, beginning.size(), beginning) != 0)
        refuse("it is there and was not made by " + m_option);
}

}  // namespace render
