#pragma once

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

namespace editor {

/// The arguments with which fxrender renders these inputs; output is added where it is known.
QStringList renderArguments(const std::vector<std::string>& inputs, const QStringList& filterTexts,
                            const QString& output);

/// The same as one line for a shell, with a place for the output.
QString commandText(const std::vector<std::string>& inputs, const QStringList& filterTexts);

}  // namespace editor
