#include "host/kernel/LibraryFile.h"

#include <QFile>
#include <cstring>
#include <optional>
#include <vector>

#if defined(Q_OS_LINUX)

#include <link.h>

/// The head of the library that this is a part of, as the linker names it.
extern "C" __attribute__((visibility("hidden"))) const ElfW(Ehdr) __ehdr_start;

namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Section = ElfW(Shdr);
using Entry = ElfW(Dyn);

const qint64 kLargestLibrary = 1 << 30;  // bytes; it is read as a whole

/// Bounds-checked access to the bytes of an ELF file.
class Bytes {
public:
    explicit Bytes(const QByteArray& bytes) : m_bytes(bytes) {}

    bool holds(quint64 offset, quint64 length) const {
        const auto size = static_cast<quint64>(m_bytes.size());
        return offset <= size && length <= size - offset;
    }
    template <typename Record>
    std::optional<Record> at(quint64 offset) const {
        Record record;
        if (!holds(offset, sizeof record)) return std::nullopt;
        std::memcpy(&record, m_bytes.constData() + offset, sizeof record);
        return record;
    }
    QByteArray textAt(quint64 offset) const {
        if (!holds(offset, 1)) return QByteArray();
        const int start = static_cast<int>(offset);
        const auto end = m_bytes.indexOf('\0', start);
        return end < 0 ? QByteArray() : m_bytes.mid(start, end - start);
    }

private:
    QByteArray m_bytes;
};

LibraryFile::Fault faultOf(const Header& header) {
    const Header& own = __ehdr_start;
    const int wordSize = header.e_ident[EI_CLASS];
    if (wordSize != ELFCLASS32 && wordSize != ELFCLASS64) return LibraryFile::NoLibrary;
    if (wordSize != own.e_ident[EI_CLASS]) return LibraryFile::OtherWordSize;
    if (header.e_ident[EI_DATA] != own.e_ident[EI_DATA] || header.e_machine != own.e_machine)
        return LibraryFile::OtherProcessor;
    return header.e_type == ET_DYN ? LibraryFile::None : LibraryFile::NoLibrary;
}

std::vector<Segment> segmentsOf(const Bytes& bytes, const Header& header) {
    std::vector<Segment> segments;
    for (int i = 0; i < header.e_phnum; ++i)
        if (const auto segment = bytes.at<Segment>(header.e_phoff + quint64(i) * sizeof(Segment)))
            segments.push_back(*segment);
    return segments;
}

bool endsEarly(const Bytes& bytes, const Header& header, const std::vector<Segment>& segments) {
    if (segments.size() < header.e_phnum) return true;
    if (!bytes.holds(header.e_shoff, quint64(header.e_shnum) * sizeof(Section))) return true;
    for (const Segment& segment : segments)
        if (!bytes.holds(segment.p_offset, segment.p_filesz)) return true;
    return false;
}

/// Where in the file the byte stands that is loaded to `address`.
std::optional<quint64> offsetOf(quint64 address, const std::vector<Segment>& segments) {
    for (const Segment& segment : segments)
        if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
            address - segment.p_vaddr < segment.p_filesz)
            return segment.p_offset + (address - segment.p_vaddr);
    return std::nullopt;
}

QByteArrayList neededBy(const Bytes& bytes, const std::vector<Segment>& segments) {
    std::vector<quint64> names;
    std::optional<quint64> texts;
    for (const Segment& segment : segments) {
        if (segment.p_type != PT_DYNAMIC) continue;
        for (quint64 i = 0; i < segment.p_filesz / sizeof(Entry); ++i) {
            const auto entry = bytes.at<Entry>(segment.p_offset + i * sizeof(Entry));
            if (!entry || entry->d_tag == DT_NULL) break;
            if (entry->d_tag == DT_NEEDED) names.push_back(entry->d_un.d_val);
            if (entry->d_tag == DT_STRTAB) texts = offsetOf(entry->d_un.d_ptr, segments);
        }
    }
    QByteArrayList needed;
    if (texts)
        for (const quint64 name : names) needed << bytes.textAt(*texts + name);
    return needed;
}

}  // namespace

LibraryFile::LibraryFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kLargestLibrary) return;
    if (file.peek(SELFMAG) != QByteArray(ELFMAG)) {
        fault = NoLibrary;
        return;
    }
    const Bytes bytes(file.readAll());
    const auto header = bytes.at<Header>(0);
    fault = header ? faultOf(*header) : CutShort;
    if (fault != None) return;
    const std::vector<Segment> segments = segmentsOf(bytes, *header);
    if (endsEarly(bytes, *header, segments))
        fault = CutShort;
    else
        needs = neededBy(bytes, segments);
}

#else

LibraryFile::LibraryFile(const QString&) {}

#endif
