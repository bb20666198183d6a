#pragma once

#include <QPointer>
#include <QString>
#include <QToolBox>
#include <QUndoStack>
#include <memory>

#include "host/document/FilterCatalog.h"
#include "host/kernel/PluginLoader.h"

// The editor, from bottom to top. Arrows point down only; panels do not know one another.
//
//   MainWindow          arranges the panels; MainMenus names the actions and their keys
//   actions             FileActions, ChainActions: what is done to the document as a whole, and to
//                       applied filters; ask, then act
//   panels              ChainPanel, PictureView, InfoPanel, TimelinePanel, MessageBar ...: each
//                       gets what it needs in its constructor, shows it, turns gestures into
//                       commands
//   PreviewController   turns changes of the store and of EditorState into requests for a picture
//   PreviewWorker       a thread that renders the newest request and keeps the picture after each
//                       filter; knows no widget
//   EditorState         what panels share: frame, shown stage, way of comparing, zoom, the picture
//   EditorDocument      the open project: input, path, saved or not; its steps are undo commands
//   EditorSession       the plug-in's filters, the undo stack, the tool box
//
// The document itself is the kernel store. An edit goes the way the contract prescribes: page,
// entry widget, commitGuiChanges, one command, store; the store announces it, pages and preview
// follow.

namespace editor {

/// The filters of one plug-in, with what they were given. Made once, before any window, and gone
/// after the last one. Throws std::runtime_error with a message for the user when the plug-in is
/// refused.
class EditorSession {
public:
    /// An empty name means the plug-in that belongs to this program.
    explicit EditorSession(const QString& pluginFile = QString());
    ~EditorSession();

    /// The absolute path of a plug-in that is not this program's own; else empty.
    const QString& foreignPlugin() const { return m_foreignPlugin; }

    QUndoStack& undoStack() { return m_undoStack; }
    /// The tool box that the manipulators filled; a window that takes it as its child gives it
    /// back.
    QToolBox* toolBox() const { return m_toolBox; }
    const document::FilterCatalog& catalog() const { return m_catalog; }

private:
    const QString m_foreignPlugin;
    QUndoStack m_undoStack;
    QPointer<QToolBox> m_toolBox;
    PluginLoader m_loader;
    document::FilterCatalog m_catalog;
};

}  // namespace editor
