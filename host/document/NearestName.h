#pragma once

#include <QString>
#include <QStringList>

namespace document {

/// The choice whose spelling is nearest to what was typed (fewest inserted, deleted, replaced or
/// swapped letters, upper and lower case alike); the first of several. Null when none is near
/// enough to have been meant, which is when more than a third of the letters differ.
QString nearestName(const QString& typed, const QStringList& choices);

/// The names in quotation marks, for a message: "a", "b", "c".
QString quotedList(const QStringList& names);

}  // namespace document
