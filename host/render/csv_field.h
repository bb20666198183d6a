#pragma once

#include <string>

#include "host/media/file_names.h"

namespace render {

/// A text, such as a file's name, as a field of CSV (RFC 4180).
inline std::string csvField(const std::string& text) {
    const std::string line = media::shown(text);
    if (line.find_first_of(",\"") == std::string::npos) return line;
    std::string field = "\"";
    for (const char c : line) field += c == '"' ? std::string("\"\"") : std::string(1, c);
    return field + '"';
}

}  // namespace render
