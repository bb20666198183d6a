#include "host/document/NearestName.h"

#include <algorithm>
#include <vector>

namespace document {

namespace {

/// Optimal string alignment distance: like Levenshtein's, with a swap of neighbours as one edit.
int editDistance(const QString& a, const QString& b) {
    const int columns = static_cast<int>(b.size()) + 1;
    std::vector<int> beforeLast(columns), last(columns), row(columns);
    for (int j = 0; j < columns; ++j) last[j] = j;
    for (int i = 1; i <= static_cast<int>(a.size()); ++i) {
        row[0] = i;
        for (int j = 1; j < columns; ++j) {
            const bool same = a[i - 1] == b[j - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last[columns - 1];
}

}  // namespace

QString nearestName(const QString& typed, const QStringList& choices) {
    // A name longer than any sensible one is not a slip of the finger, and the distance is
    // quadratic in it.
    const int longestTyped = 200;
    if (typed.size() > longestTyped) return QString();

    QString nearest;
    int nearestDistance = 0;
    for (const QString& choice : choices) {
        const int distance = editDistance(typed.toCaseFolded(), choice.toCaseFolded());
        if (nearest.isNull() || distance < nearestDistance) {
            nearest = choice;
            nearestDistance = distance;
        }
    }
    const int longer = static_cast<int>(std::max(typed.size(), nearest.size()));
    return nearestDistance * 3 <= longer ? nearest : QString();
}

QString quotedList(const QStringList& names) {
    return names.isEmpty() ? QString() : '"' + names.join(QStringLiteral("\", \"")) + '"';
}

}  // namespace document
