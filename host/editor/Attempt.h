#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace editor {

/// Runs what may throw; false, and the reason shown under this heading, when it does.
bool attempt(QWidget* window, const QString& heading, const std::function<void()>& work);

}  // namespace editor
