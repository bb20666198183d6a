#pragma once

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

namespace editor {

/// The line for a shell with which fxrender renders these inputs, read with this range, through
/// these filters, with a place for the output. `foreignPlugin` as EditorSession says it.
QString commandText(const QString& foreignPlugin, const std::vector<std::string>& inputs,
                    const std::string& range, const QStringList& filterTexts);

}  // namespace editor
