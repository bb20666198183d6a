#pragma once

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <functional>

class QAction;
class QMainWindow;
class QMenu;

namespace editor {

class ChainActions;
class ChainSnapshots;
class EditorSession;
class EditorState;
class FileActions;
class PictureView;
class TimelinePanel;

/// The menus and the tool bar of the window: names, keys and when they are of use. What an action
/// does is in the part it belongs to.
class MainMenus : public QObject {
    Q_OBJECT

public:
    struct Parts {
        EditorSession& session;
        EditorState& state;
        FileActions& files;
        ChainActions& filters;
        ChainSnapshots& snapshots;
        PictureView& view;
        TimelinePanel& timeline;
    };

    /// The docks of the window are there already.
    MainMenus(QMainWindow& window, const Parts& parts);

    void setAvailable(bool isOpen, bool isSequence);

private:
    void buildFileMenu();
    void buildEditMenu();
    void buildFilterMenu();
    void buildFrameMenu();
    void buildViewMenu();
    void showRecent();
    QAction* addAction(QMenu* menu, const QString& text, const QKeySequence& keys, const char* name,
                       const std::function<void()>& action);

    QMainWindow& m_window;
    const Parts m_parts;
    QMenu* m_recentMenu = nullptr;
    QList<QAction*> m_needsPicture;  ///< only of use when something is open
    QList<QAction*> m_needsFrames;   ///< only with more than one frame
};

}  // namespace editor
