#pragma once

#include <QMainWindow>

#include "host/editor/ChainSnapshots.h"
#include "host/editor/EditorDocument.h"
#include "host/editor/EditorState.h"
#include "host/editor/PreviewController.h"

class QDockWidget;
class QLabel;
class QStackedWidget;

namespace editor {

class ChainActions;
class ChainPanel;
class FileActions;
class Journal;
class MainMenus;
class MessageBar;
class PictureView;
class StartPage;
class TimelinePanel;

/// Arranges the panels. The actions are in FileActions and ChainActions, the menus in MainMenus.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(EditorSession& session, QWidget* parent = nullptr);
    ~MainWindow() override;

    void showSweep(int objectId);

    FileActions& files() { return *m_files; }
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
    QWidget* buildCentre();

    void showTitle();
    void showStatus();
    void sourceChanged();

    EditorSession& m_session;
    EditorDocument m_document;
    EditorState m_state;
    PreviewController m_preview;
    Journal* m_journal;
    FileActions* m_files;

    StartPage* m_startPage;
    PictureView* m_view;
    MessageBar* m_messages;
    ChainPanel* m_chain;
    ChainActions* m_chainActions;
    MainMenus* m_menus;
    TimelinePanel* m_timeline;
    QStackedWidget* m_pages;
    QDockWidget* m_chainDock;
    QDockWidget* m_timelineDock;
    ChainSnapshots m_snapshots;
    QLabel* m_statusVersion;
    QLabel* m_statusPicture;
    QLabel* m_statusZoom;
};

}  // namespace editor
