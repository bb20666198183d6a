#include "host/media/file_names.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include "host/media/MediaError.h"

namespace media {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Length of the UTF-8 sequence of a printable character at position i, 0 where there is none.
std::size_t printableLength(const std::string& text, std::size_t i) {
    const auto byte = [&](std::size_t k) {
        return k < text.size() ? static_cast<unsigned char>(text[k]) : 0u;
    };
    const unsigned lead = byte(i);
    if (lead < 0x80) return lead >= 0x20 && lead != 0x7f ? 1 : 0;
    const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4) return 0;
    for (std::size_t k = 1; k < length; ++k)
        if ((byte(i + k) & 0xc0) != 0x80) return 0;
    const unsigned second = byte(i + 1);
    const bool invalid = (lead == 0xe0 && second < 0xa0) || (lead == 0xed && second > 0x9f) ||
                         (lead == 0xf0 && second < 0x90) || (lead == 0xf4 && second > 0x8f) ||
                         (lead == 0xc2 && second < 0xa0);  // C1 control characters
    return invalid ? 0 : length;
}

std::size_t suffixStart(const std::string& fileName) {
    const std::size_t point = fileName.rfind('.');
    return point == std::string::npos || point == 0 ? fileName.size() : point;
}

}  // namespace

std::string fileNameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string stemOf(const std::string& fileName) {
    return fileName.substr(0, suffixStart(fileName));
}

std::string suffixOf(const std::string& fileName) {
    std::string suffix = fileName.substr(suffixStart(fileName));
    for (char& c : suffix)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return suffix;
}

bool naturalLess(const std::string& a, const std::string& b) {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (!isDigit(a[i]) || !isDigit(b[j])) {
            if (a[i] != b[j])
                return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]);
            ++i;
            ++j;
            continue;
        }
        // Numbers of any length: without leading zeros the longer is larger.
        const auto number = [](const std::string& text, std::size_t& at) {
            while (at < text.size() && text[at] == '0') ++at;
            const std::size_t begin = at;
            while (at < text.size() && isDigit(text[at])) ++at;
            return text.substr(begin, at - begin);
        };
        const std::string left = number(a, i);
        const std::string right = number(b, j);
        if (left.size() != right.size()) return left.size() < right.size();
        if (left != right) return left < right;
    }
    if (i < a.size() || j < b.size()) return j < b.size();
    return a < b;
}

std::string shown(const std::string& path) {
    std::string text;
    for (std::size_t i = 0; i < path.size();) {
        if (const std::size_t length = printableLength(path, i)) {
            text.append(path, i, length);
            i += length;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(path[i++]));
        text += escape;
    }
    return text;
}

std::vector<std::string> filesIn(const std::string& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(folder.c_str()), closedir);
    if (!directory)
        throw MediaError(MediaErrorKind::MissingInput,
                         shown(folder) + ": the folder cannot be read (" + reasonOf(errno) +
                             "); check its name and permissions");
    std::vector<std::string> names;
    while (const dirent* entry = readdir(directory.get())) {
        const std::string name = entry->d_name;
        struct stat status {};
        if (name[0] != '.' && stat((folder + '/' + name).c_str(), &status) == 0 &&
            S_ISREG(status.st_mode))
            names.push_back(name);
    }
    return names;
}

bool identityOf(const std::string& path, FileIdentity& identity) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    identity = {status.st_dev, status.st_ino};
    return true;
}

std::string reasonOf(int errorNumber) {
    std::string reason = std::generic_category().message(errorNumber);
    if (!reason.empty() && reason[0] >= 'A' && reason[0] <= 'Z')
        reason[0] = static_cast<char>(reason[0] - 'A' + 'a');
    return reason;
}

std::string adviceOnWriting(int errorNumber) {
    switch (errorNumber) {
        case ENOSPC:
        case EDQUOT:
            return "make room on the disk (space and number of files) or choose another folder";
        case EFBIG:
            return "raise the limit of file sizes (ulimit -f) or choose another folder";
        default:
            return "check the disk";
    }
}

}  // namespace media
