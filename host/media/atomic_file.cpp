#include "host/media/atomic_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <set>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

namespace media {

namespace {

/// What the names of this machine's temporary files begin with; then come the number of the process
/// and one of ours.
const std::string& namePrefix() {
    static const std::string prefix = [] {
        char host[HOST_NAME_MAX + 1] = {};
        gethostname(host, sizeof host - 1);
        return ".part-" + std::string(host) + '-';
    }();
    return prefix;
}

/// In the words for what failed: a place where nothing may be made, or a disk that is full or ill.
[[noreturn]] void fail(const std::string& path, int errorNumber) {
    const std::string reason = reasonOf(errorNumber);
    switch (errorNumber) {
        case ENOSPC:
        case EDQUOT:
            throw MediaError(MediaErrorKind::ReadWrite,
                             shown(path) + ": writing failed (" + reason +
                                 "); make room on the disk (space and number of files) or choose "
                                 "another folder");
        case EIO:
        case EFBIG:
        case ESTALE:
            throw MediaError(MediaErrorKind::ReadWrite,
                             shown(path) + ": writing failed (" + reason + "); check the disk");
        case ENOMEM:
            throw MediaError(MediaErrorKind::NoMemory,
                             shown(path) + ": writing failed (" + reason + "); try again later");
        default:
            throw MediaError(MediaErrorKind::CannotCreate,
                             shown(path) + ": the file cannot be created (" + reason +
                                 "); choose another name or folder, or change the folder's "
                                 "permissions");
    }
}

/// The file a link stands for, so that the link is kept and its target replaced.
std::string targetOf(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

class Descriptor {
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }
    operator int() const { return m_number; }
    void take(int number) {
        close();
        m_number = number;
    }
    int close() {
        const int result = m_number >= 0 ? ::close(m_number) : 0;
        m_number = -1;
        return result;
    }

private:
    int m_number;
};

/// Removes what processes of this machine that died left here, once for each folder.
void sweep(const std::string& folder) {
    static std::mutex mutex;
    static std::set<std::string> swept;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!swept.insert(folder).second) return;
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(folder.c_str()), closedir);
    while (const dirent* entry = directory ? readdir(directory.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (name.compare(0, namePrefix().size(), namePrefix()) != 0) continue;
        const int process = std::atoi(name.c_str() + namePrefix().size());
        if (process > 0 && kill(process, 0) != 0 && errno == ESRCH)
            ::unlink((folder + '/' + name).c_str());
    }
}

/// A file that is not there unless it is renamed. Where the file system can, it has no name until
/// it is complete, so that not even a power cut leaves it behind.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& target)
        : m_target(target), m_folder(folderOf(target)) {
        sweep(m_folder);
        m_file.take(::open(m_folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666));
        if (m_file >= 0) return;
        if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOENT)
            fail(target, errno);
        withNewName([&] {
            m_file.take(::open(m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
            return m_file >= 0;
        });
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    ~TemporaryFile() {
        if (!m_name.empty()) ::unlink(m_name.c_str());
    }

    /// Who may do what with the file it takes the place of. Only its owner and root may say so;
    /// where we may not give it away, at least nobody may do more than before.
    void takeRightsOf(const struct stat& replaced) {
        constexpr mode_t kSharedBits = S_IRWXG | S_IRWXO | S_ISUID | S_ISGID;
        struct stat own {};
        mode_t mode = replaced.st_mode & 07777;
        if (fstat(m_file, &own) != 0) fail(m_target, errno);
        const bool isSame = own.st_uid == replaced.st_uid && own.st_gid == replaced.st_gid;
        if (!isSame && fchown(m_file, replaced.st_uid, replaced.st_gid) != 0 &&
            fchown(m_file, static_cast<uid_t>(-1), replaced.st_gid) != 0)
            mode &= ~kSharedBits | (own.st_mode & kSharedBits);
        fchmod(m_file, mode);  // best effort: file systems without modes refuse
    }

    void write(const std::vector<unsigned char>& bytes) {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count = ::write(m_file, bytes.data() + done, bytes.size() - done);
            if (count < 0 && errno != EINTR) fail(m_target, errno);
            if (count > 0) done += static_cast<std::size_t>(count);
        }
    }

    void rename() {
        sync(m_file);
        if (m_name.empty()) {
            // By way of /proc: linking by the descriptor alone is root's right.
            const std::string self = "/proc/self/fd/" + std::to_string(m_file);
            withNewName([&] {
                return linkat(AT_FDCWD, self.c_str(), AT_FDCWD, m_name.c_str(),
                              AT_SYMLINK_FOLLOW) == 0;
            });
        }
        if (m_file.close() != 0 && errno != EINTR) fail(m_target, errno);
        if (::rename(m_name.c_str(), m_target.c_str()) != 0) fail(m_target, errno);
        m_name.clear();
        // The new name, too, survives a power cut.
        const Descriptor folder(::open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder >= 0) sync(folder);
    }

private:
    void sync(int descriptor) const {
        // EINVAL, ENOTSUP: a file system without a disk behind it.
        if (fsync(descriptor) != 0 && errno != EINVAL && errno != ENOTSUP) fail(m_target, errno);
    }

    /// Several processes, perhaps on several machines, choose names in one folder: a clash is
    /// noticed and the next name tried.
    template <typename Attempt>
    void withNewName(Attempt attempt) {
        static std::atomic<unsigned> counter{std::random_device{}()};
        constexpr int kAttempts = 100;
        for (int i = 0; i < kAttempts; ++i) {
            m_name = m_folder + '/' + namePrefix() + std::to_string(getpid()) + '-' +
                     std::to_string(counter++) + suffixOf(fileNameOf(m_target));
            if (attempt()) return;
            if (errno != EEXIST && errno != EINTR) break;
        }
        m_name.clear();
        fail(m_target, errno);
    }

    const std::string m_target;
    const std::string m_folder;
    std::string m_name;  ///< the name it has now, if it has one
    Descriptor m_file;
};

}  // namespace

void writeFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes) {
    const std::string target = targetOf(path);
    struct stat replaced {};
    const bool replaces = stat(target.c_str(), &replaced) == 0;
    if (replaces && !S_ISREG(replaced.st_mode))
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(path) + (S_ISDIR(replaced.st_mode)
                                            ? ": a folder has this name; choose another"
                                            : ": this is no regular file; choose another name"));
    TemporaryFile file(target);
    if (replaces) file.takeRightsOf(replaced);
    file.write(bytes);
    file.rename();
}

}  // namespace media
