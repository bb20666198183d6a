#pragma once

#include <QColor>
#include <QString>

namespace editor {

enum class Theme { System, Light, Dark };

/// Gives the application its style and colours. System takes those of the desktop as they are.
void applyTheme(Theme theme);

/// The names under which a theme is chosen and remembered: "system", "light", "dark".
Theme themeOfName(const QString& name);
QString nameOfTheme(Theme theme);

/// Neutral surroundings for pictures: a tinted or bright one would change how colours look.
QColor pictureSurroundings();

bool isDarkTheme();  ///< whether the palette in use is

}  // namespace editor
