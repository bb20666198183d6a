#pragma once

#include <QIcon>

namespace editor {

/// The editor's own signs, drawn in the text colour of the palette: they read on light and dark
/// backgrounds and at any size.
enum class Glyph {
    Eye,
    Grip,
    Expanded,
    Collapsed,
    Warning,
    Play,
    Pause,
    First,
    Previous,
    Next,
    Last,
    PreviousKey,
    NextKey,
    AddKey,
    RemoveKey,
    Fit,
    OneToOne,
    Wipe,
    SideBySide,
    Difference,
    Objects,
    Single,
    Open,
    Folder,
    Project,
    Image,
    More
};
QIcon glyphIcon(Glyph glyph);

}  // namespace editor
