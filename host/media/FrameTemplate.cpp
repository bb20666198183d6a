#include "host/media/FrameTemplate.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "host/media/file_names.h"

namespace media {

namespace {

struct Place {
    std::size_t begin = 0;
    std::size_t end = 0;
    int digits = 1;
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The first %d or %0Nd.
std::optional<Place> printfPlace(const std::string& name) {
    for (std::size_t i = 0; i + 1 < name.size(); ++i) {
        if (name[i] != '%') continue;
        if (name[i + 1] == '%') {
            ++i;
            continue;
        }
        std::size_t end = i + 1;
        while (end < name.size() && isDigit(name[end])) ++end;
        if (end == name.size() || name[end] != 'd') continue;
        int digits = 1;
        if (end > i + 1) {
            // %4d would pad with blanks, which no file name does.
            const auto read = std::from_chars(name.data() + i + 1, name.data() + end, digits);
            const bool isWidth =
                read.ec == std::errc() && digits >= 1 && digits <= kMostFrameDigits;
            if (name[i + 1] != '0' || !isWidth) continue;
        }
        return Place{i, end + 1, digits};
    }
    return std::nullopt;
}

/// The last run of #.
std::optional<Place> hashPlace(const std::string& name) {
    const std::size_t last = name.rfind('#');
    if (last == std::string::npos) return std::nullopt;
    const std::size_t before = name.find_last_not_of('#', last);
    const std::size_t begin = before == std::string::npos ? 0 : before + 1;
    const std::size_t digits = last + 1 - begin;
    if (digits > kMostFrameDigits) return std::nullopt;
    return Place{begin, last + 1, static_cast<int>(digits)};
}

std::string withoutDoubledPercent(std::string text) {
    for (std::size_t i = text.find("%%"); i != std::string::npos; i = text.find("%%", i + 1))
        text.erase(i, 1);
    return text;
}

}  // namespace

std::optional<FrameTemplate> FrameTemplate::parse(const std::string& path) {
    const std::string name = fileNameOf(path);
    const std::optional<Place> printf = printfPlace(name);
    const std::optional<Place> place = printf ? printf : hashPlace(name);
    if (!place) return std::nullopt;
    FrameTemplate result;
    result.m_folder = path.substr(0, path.size() - name.size());
    result.m_before = name.substr(0, place->begin);
    result.m_after = name.substr(place->end);
    result.m_digits = place->digits;
    if (printf) {
        result.m_before = withoutDoubledPercent(result.m_before);
        result.m_after = withoutDoubledPercent(result.m_after);
    }
    return result;
}

std::string FrameTemplate::fileName(std::int64_t frame) const {
    char number[32];
    std::snprintf(number, sizeof number, "%0*lld", m_digits, static_cast<long long>(frame));
    return m_before + number + m_after;
}

std::optional<std::int64_t> FrameTemplate::frameOf(const std::string& name) const {
    if (name.size() <= m_before.size() + m_after.size()) return std::nullopt;
    const char* begin = name.data() + m_before.size();
    const char* end = name.data() + name.size() - m_after.size();
    std::int64_t frame = 0;
    const std::from_chars_result parsed = std::from_chars(begin, end, frame);
    if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
    // Compared as a whole: 007 is not what #### makes of 7.
    return fileName(frame) == name ? std::optional<std::int64_t>(frame) : std::nullopt;
}

}  // namespace media
