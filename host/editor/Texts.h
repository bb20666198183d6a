#pragma once

#include <QCoreApplication>
#include <QString>

namespace editor {

/// "1 object", "25 objects"; none is said like several.
inline QString objectCountText(int count) {
    return count == 1 ? QCoreApplication::translate("editor", "1 object")
                      : QCoreApplication::translate("editor", "%1 objects").arg(count);
}

}  // namespace editor
