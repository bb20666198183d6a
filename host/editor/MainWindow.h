#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QStringList>
#include <functional>

#include "host/editor/ChainSnapshots.h"
#include "host/editor/EditorDocument.h"
#include "host/editor/EditorState.h"
#include "host/editor/PreviewController.h"

class QActionGroup;
class QDockWidget;
class QLabel;
class QStackedWidget;

namespace editor {

class ChainActions;
class ChainPanel;
class ExportDialog;
class Journal;
class MessageBar;
class PictureView;
class StartPage;
class TimelinePanel;

/// Arranges the panels and owns the menus. What an action does is in the class it belongs to.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(EditorSession& session, QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Opens a project, or pictures as a new one, after asking about unsaved changes. False, and a
    /// message shown, when it cannot be.
    bool open(const QStringList& paths);
    bool save();
    bool saveAs(const QString& path);
    void openSample();
    /// Offers what a crash left behind. Nothing of it is lost before the user has decided.
    void offerRecovery();
    void showExport();
    void showSweep(int objectId);

    EditorDocument& document() { return m_document; }
    EditorState& state() { return m_state; }
    PreviewController& preview() { return m_preview; }
    Journal& journal() { return *m_journal; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void buildDocks();
    void buildMenus();
    void buildFileMenu();
    void buildEditMenu();
    void buildFilterMenu();
    void buildViewMenu();
    void buildFrameMenu();
    QWidget* buildCentre();
    QAction* addAction(QMenu* menu, const QString& text, const QKeySequence& keys, const char* name,
                       const std::function<void()>& action);

    bool confirmDiscard();
    void askForFiles();
    void askForFolder();
    void askForProject();
    void askForOtherInput();
    bool askAndSave();
    void copyCommandLine();
    void remember(const QStringList& paths);
    void showRecent();
    void showTitle();
    void showStatus();
    void showNotices(const QStringList& notices);
    void sourceChanged();

    EditorSession& m_session;
    EditorDocument m_document;
    EditorState m_state;
    PreviewController m_preview;
    Journal* m_journal;

    StartPage* m_startPage;
    PictureView* m_view;
    MessageBar* m_messages;
    ChainPanel* m_chain;
    ChainActions* m_chainActions;
    TimelinePanel* m_timeline;
    QStackedWidget* m_pages;
    QDockWidget* m_chainDock;
    QDockWidget* m_timelineDock;
    QMenu* m_recentMenu = nullptr;
    ChainSnapshots m_snapshots;
    QLabel* m_statusVersion;
    QActionGroup* m_comparisons = nullptr;
    QLabel* m_statusPicture;
    QLabel* m_statusZoom;
    QPointer<ExportDialog> m_export;
    QList<QAction*> m_needsPicture;  ///< only of use when something is open
    QList<QAction*> m_needsFrames;   ///< only with more than one frame
};

}  // namespace editor
