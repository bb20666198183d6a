#include "host/render/OutputBook.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"
#include "host/render/ContentHash.h"
#include "host/render/ExitCode.h"

namespace render {

namespace {

/// A file as it stands, hashed when that is asked for first.
class StandingFile {
public:
    explicit StandingFile(const std::string& path) : m_path(path) {
        struct stat status {};
        m_exists = stat(path.c_str(), &status) == 0;
        m_size = status.st_size;
        m_changed = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
    }

    bool exists() const { return m_exists; }
    std::int64_t size() const { return m_size; }
    std::int64_t changed() const { return m_changed; }

    const std::string& hash() {
        if (!m_hash) m_hash = hashOfFile(m_path).value_or("unreadable");
        return *m_hash;
    }

    /// Whether the record is about this file. The time may differ in a copy, the bytes may not.
    bool isFileOf(const OutputRecord& record, OutputBook::Look look) {
        if (record.size != m_size) return false;
        const bool isTrusted = look == OutputBook::Look::Quick && record.changed == m_changed;
        return isTrusted || record.hash == hash();
    }

private:
    const std::string m_path;
    bool m_exists;
    std::int64_t m_size;
    std::int64_t m_changed;
    std::optional<std::string> m_hash;
};

std::string folderOfOutputs(const media::MediaSink& sink, const std::vector<std::int64_t>& frames) {
    if (frames.size() > 1 && sink.path(frames.front()) == sink.path(frames.back()))
        throw UsageError(media::shown(sink.path(frames.front())) +
                         ": one file of many frames is made in one run; --resume, --shard and "
                         "verify need a file for each frame, such as frame_####.png");
    return media::folderOf(sink.path(frames.front()));
}

}  // namespace

OutputBook::OutputBook(const media::MediaSource& source, const media::MediaSink& sink,
                       const std::vector<std::int64_t>& frames, const OutputOrigin& origin,
                       const std::string& shard)
    : m_sink(sink),
      m_records(readLedgers(folderOfOutputs(sink, frames))),
      m_ledger(folderOfOutputs(sink, frames), shard) {
    // Before any frame is read: an input that changes meanwhile makes its output stale, not right.
    const Fingerprints fingerprints(source, origin);
    for (const std::int64_t frame : frames)
        m_fingerprints[frame] = fingerprints.of(frame, sink.path(frame));
}

Standing OutputBook::standingOf(std::int64_t frame, Look look) const {
    const std::string path = m_sink.path(frame);
    const Fingerprint& today = m_fingerprints.at(frame);
    StandingFile file(path);
    if (!file.exists()) return {Standing::Missing, "missing"};
    const auto [begin, end] = m_records.equal_range(media::fileNameOf(path));
    if (begin == end) return {Standing::Unrecorded, "there, but nobody recorded how it was made"};
    const OutputRecord* latest = nullptr;
    for (auto record = begin; record != end; ++record) {
        if (!file.isFileOf(record->second, look)) continue;
        if (record->second.fingerprint == today) return {Standing::UpToDate, "up to date"};
        latest = &record->second;
    }
    if (latest)
        return {Standing::Stale,
                "stale (" + today.differenceTo(latest->fingerprint) + " changed since)"};
    return {Standing::Changed, "damaged or replaced (its bytes are not those that were written)"};
}

void OutputBook::recordOutput(std::int64_t frame) {
    const std::string path = m_sink.path(frame);
    StandingFile file(path);
    const std::optional<std::string> hash = hashOfFile(path);
    if (!file.exists() || !hash)
        throw media::MediaError(media::MediaErrorKind::ReadWrite,
                                media::shown(path) +
                                    ": it was written, but cannot be read again (" +
                                    media::reasonOf(errno) + "); check the disk");
    m_ledger.add({media::fileNameOf(path), frame, m_fingerprints.at(frame), file.size(),
                  file.changed(), *hash});
}

}  // namespace render
