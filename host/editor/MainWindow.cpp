#include "host/editor/MainWindow.h"

#include <QCloseEvent>
#include <QDockWidget>
#include <QLabel>
#include <QMimeData>
#include <QScreen>
#include <QScrollArea>
#include <QSettings>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBox>
#include <QUndoView>
#include <QUrl>
#include <QVBoxLayout>

#include "host/editor/ChainActions.h"
#include "host/editor/ChainPanel.h"
#include "host/editor/FileActions.h"
#include "host/editor/InfoPanel.h"
#include "host/editor/Journal.h"
#include "host/editor/MainMenus.h"
#include "host/editor/MessageBar.h"
#include "host/editor/PictureView.h"
#include "host/editor/StartPage.h"
#include "host/editor/SweepDialog.h"
#include "host/editor/Texts.h"
#include "host/editor/TimelinePanel.h"

namespace editor {

namespace {

QDockWidget* addDock(QMainWindow* window, Qt::DockWidgetArea area, const char* name,
                     const QString& title, QWidget* content) {
    auto* dock = new QDockWidget(title, window);
    dock->setObjectName(QLatin1String(name));
    dock->setWidget(content);
    window->addDockWidget(area, dock);
    return dock;
}

/// Leaves letters and Space to the window: a list would look for steps that begin with them.
class HistoryView : public QUndoView {
public:
    using QUndoView::QUndoView;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->modifiers() == Qt::NoModifier && !event->text().isEmpty() &&
            event->text().at(0).isPrint())
            event->ignore();
        else
            QUndoView::keyPressEvent(event);
    }
};

QStringList localFiles(const QMimeData& data, QStringList* others = nullptr) {
    QStringList paths;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
        else if (others)
            *others << url.toDisplayString();
    }
    return paths;
}

}  // namespace

MainWindow::MainWindow(EditorSession& session, QWidget* parent)
    : QMainWindow(parent),
      m_session(session),
      m_document(session),
      m_preview(m_document, m_state),
      m_snapshots(session.undoStack()) {
    setObjectName(QStringLiteral("mainWindow"));
    m_journal = new Journal(m_document, this);
    connect(m_journal, &Journal::failed, this, [this](const QString& reason) {
        statusBar()->showMessage(tr("Not safe from a crash: %1").arg(reason));
    });
    m_files = new FileActions(m_document, m_state, this);
    connect(m_files, &FileActions::said, this,
            [this](const QString& message) { statusBar()->showMessage(message, 4000); });
    setAcceptDrops(true);
    setDockOptions(AnimatedDocks | AllowTabbedDocks | AllowNestedDocks);
    setCentralWidget(buildCentre());
    buildDocks();
    m_menus = new MainMenus(
        *this, {session, m_state, *m_files, *m_chainActions, m_snapshots, *m_view, *m_timeline});
    m_statusPicture = new QLabel(this);
    m_statusZoom = new QLabel(this);
    statusBar()->setContentsMargins(6, 0, 0, 0);
    statusBar()->addWidget(m_statusPicture, 1);
    m_statusVersion = new QLabel(this);
    statusBar()->addPermanentWidget(m_statusVersion);
    statusBar()->addPermanentWidget(m_statusZoom);

    connect(&m_document, &EditorDocument::titleChanged, this, &MainWindow::showTitle);
    connect(&m_document, &EditorDocument::sourceChanged, this, &MainWindow::sourceChanged);
    connect(&m_snapshots, &ChainSnapshots::toggled, this, &MainWindow::showStatus);
    connect(&m_state, &EditorState::previewChanged, this, &MainWindow::showStatus);
    connect(&m_state, &EditorState::viewChanged, this, &MainWindow::showStatus);
    sourceChanged();
    showTitle();
    QSettings settings;
    const QSize usual(1440, 900);
    if (!restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray()))
        resize(usual.boundedTo(screen()->availableSize()));
    restoreState(settings.value(QStringLiteral("panels")).toByteArray());
    m_timelineDock->setVisible(false);  // until there are frames
}

MainWindow::~MainWindow() {
    // It is the session's: another window may come.
    m_session.toolBox()->setParent(nullptr);
}

// --- Parts of the window ---

QWidget* MainWindow::buildCentre() {
    m_startPage = new StartPage;
    m_view = new PictureView(m_state);
    m_messages = new MessageBar(m_state);
    auto* picture = new QWidget;
    auto* layout = new QVBoxLayout(picture);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_messages);
    m_pages = new QStackedWidget;
    m_pages->addWidget(m_startPage);
    m_pages->addWidget(picture);

    connect(m_startPage, &StartPage::openFilesRequested, m_files, &FileActions::askForFiles);
    connect(m_startPage, &StartPage::openFolderRequested, m_files, &FileActions::askForFolder);
    connect(m_startPage, &StartPage::openProjectRequested, m_files, &FileActions::askForProject);
    connect(m_startPage, &StartPage::sampleRequested, m_files, &FileActions::openSample);
    connect(m_startPage, &StartPage::recentRequested, m_files, &FileActions::openRecent);
    const auto showRecent = [this] { m_startPage->setRecent(m_files->recent()); };
    connect(m_files, &FileActions::recentChanged, m_startPage, showRecent);
    showRecent();
    return m_pages;
}

void MainWindow::buildDocks() {
    QToolBox* toolBox = m_session.toolBox();
    toolBox->setMinimumWidth(190);
    for (QScrollArea* page : toolBox->findChildren<QScrollArea*>())
        page->setFocusPolicy(Qt::NoFocus);  // there is nothing to scroll
    addDock(this, Qt::LeftDockWidgetArea, "filtersDock", tr("Filters"), toolBox);

    m_chain = new ChainPanel(m_state);
    m_chainDock =
        addDock(this, Qt::RightDockWidgetArea, "chainDock", tr("Applied filters"), m_chain);
    m_chainActions = new ChainActions(m_session, this);
    connect(m_chain, &ChainPanel::duplicateRequested, m_chainActions, &ChainActions::duplicate);
    connect(m_chain, &ChainPanel::renameRequested, m_chainActions, &ChainActions::rename);
    connect(m_chain, &ChainPanel::menuRequested, m_chainActions, &ChainActions::showMenu);
    connect(m_chainActions, &ChainActions::sweepRequested, this, &MainWindow::showSweep);

    auto* history = new HistoryView(&m_session.undoStack());
    history->setObjectName(QStringLiteral("history"));
    history->setWordWrap(true);
    history->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    history->setEmptyLabel(tr("As opened"));
    history->setAccessibleName(tr("History"));
    auto* info = new InfoPanel(m_state);
    addDock(this, Qt::LeftDockWidgetArea, "historyDock", tr("History"), history);
    addDock(this, Qt::RightDockWidgetArea, "infoDock", tr("Levels and pixel"), info);
    m_timeline = new TimelinePanel(m_document, m_state, m_preview);
    m_timelineDock =
        addDock(this, Qt::BottomDockWidgetArea, "timelineDock", tr("Timeline"), m_timeline);
    connect(&m_timeline->keys(), &TimelineKeys::noticed, this,
            [this](const QString& message) { statusBar()->showMessage(message, 8000); });
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    resizeDocks({m_chainDock, findChild<QDockWidget*>(QStringLiteral("infoDock"))}, {520, 210},
                Qt::Vertical);
}

void MainWindow::showSweep(int objectId) {
    for (const InstanceId& id : KernelStore::instance().instances()) {
        if (id.objectId != objectId) continue;
        auto* dialog = new SweepDialog(m_document, m_state, id, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->show();
    }
}

// --- What the window shows ---

void MainWindow::sourceChanged() {
    const auto source = m_document.source();
    m_state.setFrames(source ? source->frames() : std::vector<std::int64_t>());
    m_state.setShownStage(kResultStage);
    m_state.setZoom(0);
    if (m_session.undoStack().count() == 0) m_snapshots.forget();
    const bool isOpen =
        source || m_document.isModified() || !KernelStore::instance().instances().empty();
    m_pages->setCurrentIndex(isOpen ? 1 : 0);
    const bool isSequence = m_state.frames().size() > 1;
    m_menus->setAvailable(isOpen, isSequence);
    m_timelineDock->setVisible(isSequence);
    m_session.toolBox()->setEnabled(isOpen);
    m_chain->setEnabled(isOpen);
    if (source && !source->notices().empty()) {
        QStringList lines;
        for (const std::string& line : source->notices()) lines << QString::fromStdString(line);
        statusBar()->showMessage(lines.join(QStringLiteral("   ·   ")), 15000);
    }
    showStatus();
}

void MainWindow::showTitle() {
    const QString name = m_document.name();
    setWindowTitle(name.isEmpty() ? tr("fxeditor[*]") : tr("%1[*] – fxeditor").arg(name));
    setWindowModified(m_document.isModified());
}

void MainWindow::showStatus() {
    const Preview& preview = *m_state.preview();
    m_statusVersion->setText(m_snapshots.isB() ? tr("Version B") : QString());
    if (!preview.after) {
        m_statusPicture->clear();
        m_statusZoom->clear();
        return;
    }
    QStringList parts;
    if (m_state.frames().size() > 1) parts << tr("Frame %1").arg(preview.frame);
    parts << tr("%1 × %2 pixels").arg(preview.width).arg(preview.height);
    parts << (preview.after->channels <= 2 ? tr("grey") : tr("colour"));
    if (preview.objectCount) parts << objectCountText(*preview.objectCount);
    if (preview.milliseconds >= 0.5)
        parts << tr("%1 ms").arg(preview.milliseconds, 0, 'f', preview.milliseconds < 10 ? 1 : 0);
    m_statusPicture->setText(parts.join(QStringLiteral("   ·   ")));
    m_statusZoom->setText(tr("%1 %").arg(100 * m_view->effectiveZoom(), 0, 'f', 0));
}

// --- Events ---

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!m_files->confirmQuit()) {
        event->ignore();
        return;
    }
    QSettings settings;
    settings.setValue(QStringLiteral("geometry"), saveGeometry());
    settings.setValue(QStringLiteral("panels"), saveState());
    event->accept();
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_B && event->modifiers() == Qt::NoModifier)
        m_view->setShowsBefore(true);
    else if (event->key() == Qt::Key_Space && !event->isAutoRepeat())  // no control wanted it
        m_timeline->togglePlay();
    else
        QMainWindow::keyPressEvent(event);
}

void MainWindow::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_B && !event->isAutoRepeat())
        m_view->setShowsBefore(false);
    else
        QMainWindow::keyReleaseEvent(event);
}

void MainWindow::changeEvent(QEvent* event) {
    // The release of a key that is held goes to another window.
    if (event->type() == QEvent::ActivationChange && !isActiveWindow())
        m_view->setShowsBefore(false);
    QMainWindow::changeEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!localFiles(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    QStringList others;
    const QStringList paths = localFiles(*event->mimeData(), &others);
    event->acceptProposedAction();
    if (!others.isEmpty())
        statusBar()->showMessage(tr("Left out, for they are no files of this computer: %1")
                                     .arg(others.join(QStringLiteral(", "))),
                                 8000);
    // The program that drags waits for the end of this event: no question may come in it.
    QMetaObject::invokeMethod(
        this, [this, paths] { m_files->open(paths); }, Qt::QueuedConnection);
}

}  // namespace editor
