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
        case EIO:
        case EFBIG:
        case ESTALE:
            throw MediaError(
                MediaErrorKind::ReadWrite,
                shown(path) + ": writing failed (" + reason + "); " + adviceOnWriting(errorNumber));
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

void sync(int descriptor, const std::string& target) {
    // EINVAL, ENOTSUP: a file system without a disk behind it.
    if (fsync(descriptor) != 0 && errno != EINVAL && errno != ENOTSUP) fail(target, errno);
}

/// Who may do what with the file it takes the place of. Only its owner and root may say so;
/// where we may not give it away, at least nobody may do more than before.
void takeRights(int file, const struct stat& replaced, const std::string& target) {
    constexpr mode_t kSharedBits = S_IRWXG | S_IRWXO | S_ISUID | S_ISGID;
    struct stat own {};
    mode_t mode = replaced.st_mode & 07777;
    if (fstat(file, &own) != 0) fail(target, errno);
    const bool isSame = own.st_uid == replaced.st_uid && own.st_gid == replaced.st_gid;
    if (!isSame && fchown(file, replaced.st_uid, replaced.st_gid) != 0 &&
        fchown(file, static_cast<uid_t>(-1), replaced.st_gid) != 0)
        mode &= ~kSharedBits | (own.st_mode & kSharedBits);
    fchmod(file, mode);  // best effort: file systems without modes refuse
}

}  // namespace

AtomicFile::Descriptor::~Descriptor() {
    close();
}

void AtomicFile::Descriptor::take(int number) {
    close();
    m_number = number;
}

int AtomicFile::Descriptor::close() {
    const int result = m_number >= 0 ? ::close(m_number) : 0;
    m_number = -1;
    return result;
}

AtomicFile::AtomicFile(const std::string& path)
    : m_target(targetOf(path)), m_folder(folderOf(m_target)) {
    struct stat replaced {};
    const bool replaces = stat(m_target.c_str(), &replaced) == 0;
    if (replaces && !S_ISREG(replaced.st_mode))
        throw MediaError(MediaErrorKind::CannotCreate,
                         shown(path) + (S_ISDIR(replaced.st_mode)
                                            ? ": a folder has this name; choose another"
                                            : ": this is no regular file; choose another name"));
    sweep(m_folder);
    m_file.take(::open(m_folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666));
    if (m_file < 0) {
        if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOENT)
            fail(m_target, errno);
        withNewName([this] {
            m_file.take(::open(m_name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
            return m_file >= 0;
        });
    }
    if (replaces) takeRights(m_file, replaced, m_target);
}

AtomicFile::~AtomicFile() {
    if (!m_name.empty()) ::unlink(m_name.c_str());
}

std::string AtomicFile::openName() const {
    return "/proc/self/fd/" + std::to_string(m_file);
}

void AtomicFile::write(const std::vector<unsigned char>& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = ::write(m_file, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno != EINTR) fail(m_target, errno);
        if (count > 0) done += static_cast<std::size_t>(count);
    }
}

void AtomicFile::publish() {
    sync(m_file, m_target);
    // By way of /proc: linking by the descriptor alone is root's right.
    if (m_name.empty())
        withNewName([this, self = openName()] {
            return linkat(AT_FDCWD, self.c_str(), AT_FDCWD, m_name.c_str(), AT_SYMLINK_FOLLOW) == 0;
        });
    if (m_file.close() != 0 && errno != EINTR) fail(m_target, errno);
    if (::rename(m_name.c_str(), m_target.c_str()) != 0) fail(m_target, errno);
    m_name.clear();
    // The new name, too, survives a power cut.
    const Descriptor folder(::open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder >= 0) sync(folder, m_target);
}

/// Several processes, perhaps on several machines, choose names in one folder: a clash is
/// noticed and the next name tried.
template <typename Attempt>
void AtomicFile::withNewName(Attempt attempt) {
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

void writeFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes) {
    AtomicFile file(path);
    file.write(bytes);
    file.publish();
}

}  // namespace media
