#include "host/media/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
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

[[noreturn]] void failWrite(const std::string& path, int errorNumber) {
    const bool full = errorNumber == ENOSPC || errorNumber == EDQUOT;
    throw MediaError(
        MediaErrorKind::ReadWrite,
        shown(path) + ": writing failed (" + reasonOf(errorNumber) + "); " +
            (full ? "make room on the disk or choose another folder" : "check the disk"));
}

/// The file a link stands for, so that the link is kept and its target replaced.
std::string targetOf(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

/// A file under a name of its own that disappears unless it is renamed.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& target) : m_target(target) {
        // Names that several processes, perhaps on several machines, choose in one folder; a clash
        // is noticed and the next name tried.
        static std::atomic<unsigned> counter{std::random_device{}()};
        constexpr int kAttempts = 100;
        for (int attempt = 0; attempt < kAttempts && m_descriptor < 0; ++attempt) {
            m_path = folderOf(target) + "/.part-" + std::to_string(getpid()) + '-' +
                     std::to_string(counter++) + suffixOf(target);
            m_descriptor = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (m_descriptor < 0 && errno != EEXIST && errno != EINTR) break;
        }
        if (m_descriptor < 0) failCreate(target, errno);
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    ~TemporaryFile() {
        if (m_descriptor >= 0) ::close(m_descriptor);
        if (!m_renamed) ::unlink(m_path.c_str());
    }

    void write(const std::vector<unsigned char>& bytes) {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count = ::write(m_descriptor, bytes.data() + done, bytes.size() - done);
            if (count < 0 && errno != EINTR) failWrite(m_target, errno);
            if (count > 0) done += static_cast<std::size_t>(count);
        }
    }

    void rename() {
        // EINVAL, ENOTSUP: a file system without a disk behind it.
        if (fsync(m_descriptor) != 0 && errno != EINVAL && errno != ENOTSUP)
            failWrite(m_target, errno);
        const int closed = ::close(m_descriptor);
        m_descriptor = -1;
        if (closed != 0 && errno != EINTR) failWrite(m_target, errno);
        if (::rename(m_path.c_str(), m_target.c_str()) != 0) failCreate(m_target, errno);
        m_renamed = true;
    }

private:
    std::string m_target;
    std::string m_path;
    int m_descriptor = -1;
    bool m_renamed = false;
};

}  // namespace

void writeFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes) {
    TemporaryFile file(targetOf(path));
    file.write(bytes);
    file.rename();
}

}  // namespace media
