#include "host/render/Ledger.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <optional>
#include <vector>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

namespace render {

namespace {

const char* const kFolder = "/.fxrender";
const char* const kFirstField = "fx1";  // the version of the line's layout

std::string checksumOf(const std::string& text) {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx",
                  static_cast<unsigned long long>(XXH3_64bits(text.data(), text.size())));
    return digits;
}

/// A file name as one word of printable characters.
std::string escaped(const std::string& name) {
    std::string word;
    for (const char c : name) {
        if (c > ' ' && c < 0x7f && c != '%') {
            word += c;
            continue;
        }
        char code[4];
        std::snprintf(code, sizeof code, "%%%02x", static_cast<unsigned char>(c));
        word += code;
    }
    return word;
}

std::string unescaped(const std::string& word) {
    std::string name;
    for (std::size_t i = 0; i < word.size(); ++i) {
        unsigned char byte = 0;
        if (word[i] == '%' && i + 2 < word.size() &&
            std::from_chars(word.data() + i + 1, word.data() + i + 3, byte, 16).ec == std::errc()) {
            name += static_cast<char>(byte);
            i += 2;
        } else {
            name += word[i];
        }
    }
    return name;
}

std::string lineOf(const OutputRecord& record) {
    const std::string text = std::string(kFirstField) + '\t' + escaped(record.name) + '\t' +
                             std::to_string(record.frame) + '\t' + record.fingerprint.text() +
                             '\t' + std::to_string(record.size) + '\t' +
                             std::to_string(record.changed) + '\t' + record.hash;
    return text + '\t' + checksumOf(text) + '\n';
}

std::optional<OutputRecord> recordOf(const std::string& line) {
    const std::size_t lastTab = line.rfind('\t');
    if (lastTab == std::string::npos ||
        line.substr(lastTab + 1) != checksumOf(line.substr(0, lastTab)))
        return {};
    std::vector<std::string> fields;
    for (std::size_t begin = 0; begin <= lastTab;) {
        const std::size_t end = line.find('\t', begin);
        fields.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    const std::size_t fieldCount = 7;
    if (fields.size() != fieldCount || fields[0] != kFirstField) return {};
    OutputRecord record;
    record.name = unescaped(fields[1]);
    record.fingerprint = Fingerprint::fromText(fields[3]);
    record.hash = fields[6];
    const auto read = [](const std::string& field, std::int64_t& number) {
        return std::from_chars(field.data(), field.data() + field.size(), number).ec == std::errc();
    };
    if (!read(fields[2], record.frame) || !read(fields[4], record.size) ||
        !read(fields[5], record.changed))
        return {};
    return record;
}

std::string thisMachine() {
    char name[HOST_NAME_MAX + 1] = {};
    gethostname(name, sizeof name - 1);
    return escaped(name);
}

}  // namespace

OutputRecords readLedgers(const std::string& folder) {
    OutputRecords records;
    std::vector<std::string> names;
    try {
        names = media::filesIn(folder + kFolder);
    } catch (const media::MediaError&) {
        return records;  // nothing was recorded yet
    }
    for (const std::string& name : names) {
        std::ifstream file(folder + kFolder + '/' + name, std::ios::binary);
        for (std::string line; std::getline(file, line);)
            if (std::optional<OutputRecord> record = recordOf(line))
                records.emplace(record->name, std::move(*record));
    }
    return records;
}

Ledger::Ledger(std::string folder, const std::string& shard)
    : m_folder(std::move(folder)),
      m_path(m_folder + kFolder + '/' + shard + '.' + thisMachine() + ".ledger") {}

Ledger::~Ledger() {
    if (m_file >= 0) ::close(m_file);
}

void Ledger::add(const OutputRecord& record) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_file < 0) open();
    const std::string line = (m_torn ? "\n" : "") + lineOf(record);
    const ssize_t written = ::write(m_file, line.data(), line.size());
    m_torn = written != static_cast<ssize_t>(line.size());
    if (m_torn) fail(written < 0 ? errno : ENOSPC);
}

void Ledger::open() {
    ::mkdir((m_folder + kFolder).c_str(), 0777);  // opening the file says what is wrong with it
    m_file = ::open(m_path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (m_file < 0) fail(errno);
    const off_t end = ::lseek(m_file, 0, SEEK_END);
    char last = '\n';
    if (end > 0 && ::pread(m_file, &last, 1, end - 1) != 1) fail(errno);
    m_torn = last != '\n';
}

void Ledger::fail(int errorNumber) const {
    const bool full = errorNumber == ENOSPC || errorNumber == EDQUOT || errorNumber == EFBIG;
    throw media::MediaError(
        full ? media::MediaErrorKind::ReadWrite : media::MediaErrorKind::CannotCreate,
        media::shown(m_path) + ": what was rendered cannot be recorded (" +
            media::reasonOf(errorNumber) + "); " +
            (full ? "make room on the disk" : "change the folder's permissions") +
            ", then go on with --resume");
}

}  // namespace render
