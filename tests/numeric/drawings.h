#pragma once

#include <sstream>
#include <string>

#include "planes.h"

namespace numeric::test {

/// A plane drawn as text, one line a row: '.' is 0, '#' 255, a digit itself.
inline BytePlane fromDrawing(const std::string& drawing) {
    std::istringstream lines(drawing);
    std::vector<std::string> rows;
    for (std::string line; std::getline(lines, line);) rows.push_back(line);
    BytePlane plane(static_cast<int>(rows.front().size()), static_cast<int>(rows.size()));
    return plane.set([&](int x, int y) {
        const char c = rows[y].at(x);
        return static_cast<unsigned char>(c == '.' ? 0 : c == '#' ? 255 : c - '0');
    });
}

inline std::string toDrawing(const BytePlane& plane) {
    std::string drawing;
    for (int y = 0; y < plane.height(); ++y) {
        if (y > 0) drawing += '\n';
        for (int x = 0; x < plane.width(); ++x) {
            const int pixel = plane.at(x, y);
            drawing += pixel == 0 ? '.' : pixel == 255 ? '#' : static_cast<char>('0' + pixel);
        }
    }
    return drawing;
}

}  // namespace numeric::test
