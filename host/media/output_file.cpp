#include "host/media/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

namespace media {

namespace {

[[noreturn]] void failCreate(const std::string& path, int errorNumber) {
    throw MediaError(MediaErrorKind::CannotCreate,
                     shown(path) + ": the file cannot be created (" + reasonOf(errorNumber) +
                         "); choose another name or folder, or change the folder's permissions");
}

std::string targetOf(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error)) return path;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

/// A hidden name beside the target; each call gives another.
std::string hiddenName(const std::string& target) {
    static std::atomic<unsigned> counter{std::random_device{}()};
    return folderOf(target) + "/.part-" + std::to_string(getpid()) + '-' +
           std::to_string(counter++) + suffixOf(fileNameOf(target));
}

/// Calls attempt with hidden names until one is free; false with errno set when it fails otherwise.
template <typename Attempt>
bool underFreeName(const std::string& target, std::string& name, Attempt attempt) {
    for (int tries = 0; tries < 100; ++tries) {
        name = hiddenName(target);
        if (attempt(name)) return true;
        if (errno != EEXIST && errno != EINTR) break;
    }
    const int reason = errno;
    name.clear();
    errno = reason;
    return false;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : m_target(targetOf(path)) {
    constexpr mode_t kMode = 0666;
    m_descriptor = ::open(folderOf(m_target).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kMode);
    if (m_descriptor >= 0) return;
    const auto create = [this](const std::string& name) {
        m_descriptor = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        return m_descriptor >= 0;
    };
    if (!underFreeName(m_target, m_hidden, create)) failCreate(m_target, errno);
}

OutputFile::~OutputFile() {
    if (!m_hidden.empty()) ::unlink(m_hidden.c_str());
    ::close(m_descriptor);
}

std::string OutputFile::openName() const {
    return "/proc/self/fd/" + std::to_string(m_descriptor);
}

void OutputFile::publish() {
    // EINVAL, ENOTSUP: a file system without a disk behind it.
    if (fsync(m_descriptor) != 0 && errno != EINVAL && errno != ENOTSUP)
        throw MediaError(MediaErrorKind::ReadWrite, shown(m_target) + ": writing failed (" +
                                                        reasonOf(errno) + "); check the disk");
    const auto link = [this](const std::string& name) {
        return ::linkat(AT_FDCWD, openName().c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) ==
               0;
    };
    if (m_hidden.empty() && !underFreeName(m_target, m_hidden, link)) failCreate(m_target, errno);
    if (::rename(m_hidden.c_str(), m_target.c_str()) != 0) failCreate(m_target, errno);
    m_hidden.clear();
}

}  // namespace media
