#pragma once

#include <QIcon>

enum class EntryGlyph { Keyframe, Up, Down, Remove };

QIcon entryIcon(EntryGlyph glyph);
