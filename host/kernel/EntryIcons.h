#pragma once

#include <QIcon>

enum class EntryGlyph { Keyframe, Up, Down, Remove };

/// An icon drawn in the text colour of the application's palette, so that it reads on light and on
/// dark backgrounds and at any size.
QIcon entryIcon(EntryGlyph glyph);
