#include "host/editor/MainWindow.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSettings>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QStatusBar>
#include <QToolBar>
#include <QUndoView>
#include <QVBoxLayout>
#include <functional>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/FilterChain.h"
#include "host/editor/Attempt.h"
#include "host/editor/ChainActions.h"
#include "host/editor/ChainPanel.h"
#include "host/editor/CommandText.h"
#include "host/editor/ExportDialog.h"
#include "host/editor/Glyphs.h"
#include "host/editor/InfoPanel.h"
#include "host/editor/Journal.h"
#include "host/editor/MessageBar.h"
#include "host/editor/PictureView.h"
#include "host/editor/StartPage.h"
#include "host/editor/SweepDialog.h"
#include "host/editor/Texts.h"
#include "host/editor/Theme.h"
#include "host/editor/TimelinePanel.h"
#include "host/kernel/KernelNotifier.h"
#include "host/media/SamplePicture.h"

namespace editor {

namespace {

const char kProjectSuffix[] = ".fxp";

QDockWidget* addDock(QMainWindow* window, Qt::DockWidgetArea area, const char* name,
                     const QString& title, QWidget* content) {
    auto* dock = new QDockWidget(title, window);
    dock->setObjectName(QLatin1String(name));
    dock->setWidget(content);
    window->addDockWidget(area, dock);
    return dock;
}

QString projectFilter() {
    return MainWindow::tr("Projects (*.fxp)");
}

std::vector<std::string> asInputs(const QStringList& paths) {
    std::vector<std::string> inputs;
    for (const QString& path : paths) inputs.push_back(QFile::encodeName(path).toStdString());
    return inputs;
}

bool isProject(const QStringList& paths) {
    return paths.size() == 1 &&
           paths.first().endsWith(QLatin1String(kProjectSuffix), Qt::CaseInsensitive);
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
    setAcceptDrops(true);
    setDockOptions(AnimatedDocks | AllowTabbedDocks | AllowNestedDocks);
    setCentralWidget(buildCentre());
    buildDocks();
    buildMenus();
    m_statusPicture = new QLabel(this);
    m_statusZoom = new QLabel(this);
    statusBar()->setContentsMargins(6, 0, 0, 0);
    statusBar()->addWidget(m_statusPicture, 1);
    m_statusVersion = new QLabel(this);
    statusBar()->addPermanentWidget(m_statusVersion);
    statusBar()->addPermanentWidget(m_statusZoom);

    connect(&m_document, &EditorDocument::titleChanged, this, &MainWindow::showTitle);
    connect(&m_document, &EditorDocument::sourceChanged, this, &MainWindow::sourceChanged);
    connect(&m_state, &EditorState::previewChanged, this, &MainWindow::showStatus);
    connect(&m_state, &EditorState::viewChanged, this, &MainWindow::showStatus);
    sourceChanged();
    showRecent();
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

    connect(m_startPage, &StartPage::openFilesRequested, this, &MainWindow::askForFiles);
    connect(m_startPage, &StartPage::openFolderRequested, this, &MainWindow::askForFolder);
    connect(m_startPage, &StartPage::openProjectRequested, this, &MainWindow::askForProject);
    connect(m_startPage, &StartPage::sampleRequested, this, &MainWindow::openSample);
    connect(m_startPage, &StartPage::recentRequested, this,
            [this](const QString& entry) { open(entry.split(QLatin1Char('\n'))); });
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

    auto* history = new QUndoView(&m_session.undoStack());
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

QAction* MainWindow::addAction(QMenu* menu, const QString& text, const QKeySequence& keys,
                               const char* name, const std::function<void()>& action) {
    QAction* made = menu->addAction(text);
    made->setObjectName(QLatin1String(name));
    made->setShortcut(keys);
    connect(made, &QAction::triggered, this, action);
    return made;
}

void MainWindow::buildMenus() {
    buildFileMenu();
    buildEditMenu();
    buildFilterMenu();
    buildFrameMenu();
    buildViewMenu();
}

void MainWindow::buildFileMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    addAction(menu, tr("&Open…"), QKeySequence::Open, "actOpen", [this] { askForFiles(); });
    addAction(menu, tr("Open &folder…"), tr("Ctrl+Shift+O"), "actOpenFolder",
              [this] { askForFolder(); });
    m_recentMenu = menu->addMenu(tr("Open &recent"));
    m_needsPicture << addAction(menu, tr("Replace &input…"), {}, "actReplaceInput",
                                [this] { askForOtherInput(); });
    menu->addSeparator();
    m_needsPicture << addAction(menu, tr("&Save project"), QKeySequence::Save, "actSave",
                                [this] { save(); });
    m_needsPicture << addAction(menu, tr("Save project &as…"), tr("Ctrl+Shift+S"), "actSaveAs",
                                [this] { askAndSave(); });
    menu->addSeparator();
    m_needsPicture << addAction(menu, tr("&Export…"), tr("Ctrl+E"), "actExport",
                                [this] { showExport(); });
    m_needsPicture << addAction(menu, tr("&Copy as command line"), tr("Ctrl+Shift+C"),
                                "actCopyCommand", [this] { copyCommandLine(); });
    menu->addSeparator();
    m_needsPicture << addAction(menu, tr("C&lose"), tr("Ctrl+W"), "actClose", [this] {
        if (confirmDiscard()) m_document.newEmpty();
    });
    addAction(menu, tr("&Quit"), tr("Ctrl+Q"), "actQuit", [this] { close(); });
}

void MainWindow::buildEditMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&Edit"));
    QAction* undo = m_session.undoStack().createUndoAction(menu, tr("&Undo"));
    undo->setShortcut(QKeySequence::Undo);
    undo->setObjectName(QStringLiteral("actUndo"));
    QAction* redo = m_session.undoStack().createRedoAction(menu, tr("&Redo"));
    redo->setShortcut(QKeySequence::Redo);
    redo->setObjectName(QStringLiteral("actRedo"));
    menu->addActions({undo, redo});
    menu->addSeparator();
    m_needsPicture << addAction(menu, tr("Switch between version &A and B"), tr("X"), "actToggleAB",
                                [this] {
                                    m_snapshots.toggle();
                                    showStatus();
                                });
    menu->addSeparator();
    QMenu* presets = menu->addMenu(tr("&Presets"));
    connect(presets, &QMenu::aboutToShow, this,
            [this, presets] { m_chainActions->fillPresetMenu(*presets); });
    m_needsPicture << addAction(menu, tr("Paste &filters from text"), tr("Ctrl+Shift+V"),
                                "actPasteFilters", [this] { m_chainActions->pasteFilters(); });
}

void MainWindow::buildFilterMenu() {
    QMenu* menu = menuBar()->addMenu(tr("F&ilters"));
    int number = 0;
    for (const int typeId : KernelStore::instance().types()) {
        HkFilterManipulator* manipulator = KernelStore::instance().manipulator(typeId);
        const QString keys = ++number <= 9 ? QStringLiteral("Ctrl+Alt+%1").arg(number) : QString();
        QAction* add =
            addAction(menu, tr("Add %1").arg(manipulator->filterTitle()), QKeySequence(keys), "",
                      [manipulator] { manipulator->addFilter(); });
        add->setIcon(manipulator->filterIcon());
        add->setToolTip(manipulator->filterDescription());
        add->setIconVisibleInMenu(true);
        m_needsPicture << add;
    }
}

void MainWindow::buildFrameMenu() {
    QMenu* menu = menuBar()->addMenu(tr("F&rames"));
    const auto add = [&](const QString& text, const char* keys, const char* name,
                         const std::function<void()>& action) {
        m_needsFrames << addAction(menu, text, QKeySequence(QLatin1String(keys)), name, action);
    };
    add(tr("&Play or stop"), "", "actPlay", [this] { m_timeline->togglePlay(); });
    add(tr("&Next frame"), ".", "actNextFrame", [this] { m_state.stepFrames(1); });
    add(tr("P&revious frame"), ",", "actPreviousFrame", [this] { m_state.stepFrames(-1); });
    menu->addSeparator();
    add(tr("Ne&xt key"), "Ctrl+.", "actNextKey", [this] { m_timeline->keys().goToKey(1); });
    add(tr("Pre&vious key"), "Ctrl+,", "actPreviousKey",
        [this] { m_timeline->keys().goToKey(-1); });
    add(tr("&Make a key here"), "K", "actAddKey", [this] { m_timeline->keys().addHere(); });
    add(tr("&Delete selected keys"), "", "actDeleteKeys",
        [this] { m_timeline->keys().deleteSelected(); });
    add(tr("&Copy selected keys"), "", "actCopyKeys",
        [this] { m_timeline->keys().copySelected(); });
    add(tr("Pas&te keys here"), "", "actPasteKeys", [this] { m_timeline->keys().paste(); });
}

void MainWindow::buildViewMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&View"));
    auto* bar = new QToolBar(tr("View"), this);
    bar->setObjectName(QStringLiteral("viewBar"));
    bar->setIconSize({18, 18});
    bar->setMovable(false);
    addToolBar(bar);

    const auto addView = [&](const QString& text, const QKeySequence& keys, const char* name,
                             Glyph glyph, const std::function<void()>& action) {
        QAction* made = addAction(menu, text, keys, name, action);
        made->setIcon(glyphIcon(glyph));
        made->setIconVisibleInMenu(false);
        made->setToolTip(QStringLiteral("%1 (%2)").arg(QString(text).remove(QLatin1Char('&')),
                                                       keys.toString(QKeySequence::NativeText)));
        m_needsPicture << made;
        bar->addAction(made);
        return made;
    };
    addView(tr("&Fit"), tr("Ctrl+0"), "actFit", Glyph::Fit, [this] { m_state.setZoom(0); });
    addView(tr("&100 %"), tr("Ctrl+1"), "actOneToOne", Glyph::OneToOne,
            [this] { m_state.setZoom(1); });
    m_needsPicture << addAction(menu, tr("Zoom &in"), QKeySequence::ZoomIn, "actZoomIn",
                                [this] { m_view->zoomBy(1.25); });
    m_needsPicture << addAction(menu, tr("Zoom &out"), QKeySequence::ZoomOut, "actZoomOut",
                                [this] { m_view->zoomBy(0.8); });
    menu->addSeparator();
    bar->addSeparator();
    m_comparisons = new QActionGroup(this);
    const auto addComparison = [&](const QString& text, const char* keys, const char* name,
                                   Glyph glyph, Comparison comparison) {
        QAction* made = addView(text, QKeySequence(QLatin1String(keys)), name, glyph,
                                [this, comparison] { m_state.setComparison(comparison); });
        made->setCheckable(true);
        made->setChecked(comparison == m_state.comparison());
        m_comparisons->addAction(made);
    };
    addComparison(tr("&Picture alone"), "P", "actSingle", Glyph::Single, Comparison::None);
    addComparison(tr("&Wipe line between before and after"), "W", "actWipe", Glyph::Wipe,
                  Comparison::Wipe);
    addComparison(tr("Before and after &side by side"), "S", "actSideBySide", Glyph::SideBySide,
                  Comparison::SideBySide);
    addComparison(tr("&Difference"), "D", "actDifference", Glyph::Difference,
                  Comparison::Difference);
    addComparison(tr("&Objects in colours"), "O", "actObjects", Glyph::Objects,
                  Comparison::Objects);
    auto* hint = new QLabel(tr("Hold B to see the picture before"), bar);
    hint->setForegroundRole(QPalette::PlaceholderText);
    hint->setContentsMargins(8, 0, 0, 0);
    bar->addWidget(hint);

    menu->addSeparator();
    QMenu* docks = menu->addMenu(tr("Pa&nels"));
    for (QDockWidget* dock : findChildren<QDockWidget*>())
        docks->addAction(dock->toggleViewAction());
    docks->addAction(bar->toggleViewAction());
    QMenu* themes = menu->addMenu(tr("&Theme"));
    auto* group = new QActionGroup(this);
    const auto addTheme = [&](const QString& text, Theme theme) {
        QAction* made = addAction(themes, text, {}, "", [theme] {
            applyTheme(theme);
            QSettings().setValue(QStringLiteral("theme"), nameOfTheme(theme));
        });
        made->setCheckable(true);
        made->setChecked(themeOfName(QSettings().value(QStringLiteral("theme")).toString()) ==
                         theme);
        group->addAction(made);
    };
    addTheme(tr("&System"), Theme::System);
    addTheme(tr("&Light"), Theme::Light);
    addTheme(tr("&Dark"), Theme::Dark);
}

// --- Opening and saving ---

bool MainWindow::open(const QStringList& paths) {
    if (paths.isEmpty() || !confirmDiscard()) return false;
    QStringList notices;
    const bool opened = attempt(this, tr("This cannot be opened"), [&] {
        if (isProject(paths))
            notices = m_document.openProject(QFileInfo(paths.first()).absoluteFilePath());
        else
            m_document.newFromInputs(asInputs(paths));
    });
    if (!opened) return false;
    remember(paths);
    showNotices(notices);
    return true;
}

void MainWindow::openSample() {
    if (!confirmDiscard()) return;
    attempt(this, tr("The sample cannot be made"), [this] {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        const QString file = folder + tr("/sample.png");
        if (!QDir().mkpath(folder) || !media::samplePicture().save(file))
            throw std::runtime_error(
                tr("%1 cannot be written; check the permissions").arg(file).toStdString());
        m_document.newFromInputs(asInputs({file}));
    });
}

bool MainWindow::confirmDiscard() {
    if (!m_document.isModified()) return true;
    const QString name = m_document.name().isEmpty() ? tr("the project") : m_document.name();
    const auto answer = QMessageBox::question(
        this, tr("Save changes?"), tr("Save the changes to %1?").arg(name),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    return answer == QMessageBox::Discard || (answer == QMessageBox::Save && save());
}

bool MainWindow::save() {
    return m_document.path().isEmpty() ? askAndSave() : saveAs(m_document.path());
}

bool MainWindow::saveAs(const QString& path) {
    if (!attempt(this, tr("The project cannot be saved"), [&] { m_document.saveProject(path); }))
        return false;
    remember({path});
    statusBar()->showMessage(tr("Saved %1").arg(path), 4000);
    return true;
}

bool MainWindow::askAndSave() {
    QString proposal = m_document.path();
    if (proposal.isEmpty() && !m_document.inputs().empty()) {
        const QFileInfo input(QFile::decodeName(m_document.inputs().front().c_str()));
        proposal = input.dir().filePath(input.completeBaseName() + QLatin1String(kProjectSuffix));
    }
    // With the suffix in the dialog it is the dialog that asks before a file is replaced.
    QFileDialog dialog(this, tr("Save project"), QString(), projectFilter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QLatin1String(kProjectSuffix + 1));
    if (!proposal.isEmpty()) dialog.selectFile(proposal);
    return dialog.exec() == QDialog::Accepted && saveAs(dialog.selectedFiles().constFirst());
}

void MainWindow::askForFiles() {
    open(QFileDialog::getOpenFileNames(this, tr("Open"), QString(),
                                       tr("Pictures, videos and projects (*)")));
}

void MainWindow::askForFolder() {
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Open a folder of pictures"));
    if (!folder.isEmpty()) open({folder});
}

void MainWindow::askForProject() {
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Open a project"), QString(), projectFilter());
    if (!path.isEmpty()) open({path});
}

void MainWindow::askForOtherInput() {
    const QStringList paths =
        QFileDialog::getOpenFileNames(this, tr("Apply the same filters to other pictures"),
                                      QString(), tr("Pictures, videos (*)"));
    if (!paths.isEmpty())
        attempt(this, tr("This cannot be opened"),
                [&] { m_document.replaceInputs(asInputs(paths)); });
}

void MainWindow::remember(const QStringList& paths) {
    QStringList absolute;
    for (const QString& path : paths) absolute << QFileInfo(path).absoluteFilePath();
    QSettings settings;
    QStringList entries = settings.value(QStringLiteral("recent")).toStringList();
    const QString entry = absolute.join(QLatin1Char('\n'));
    entries.removeAll(entry);
    entries.prepend(entry);
    const int most = 12;
    settings.setValue(QStringLiteral("recent"), QStringList(entries.mid(0, most)));
    showRecent();
}

void MainWindow::showRecent() {
    const QStringList entries = QSettings().value(QStringLiteral("recent")).toStringList();
    m_startPage->setRecent(entries);
    m_recentMenu->clear();
    for (const QString& entry : entries)
        connect(m_recentMenu->addAction(recentTitle(entry).replace('&', "&&")), &QAction::triggered,
                this, [=] { open(entry.split(QLatin1Char('\n'))); });
    m_recentMenu->setEnabled(!entries.isEmpty());
}

void MainWindow::showNotices(const QStringList& notices) {
    if (notices.isEmpty()) return;
    QMessageBox box(QMessageBox::Information, tr("Opened with remarks"),
                    tr("Not everything in the project can be used here. Nothing of it is lost when "
                       "you save."),
                    QMessageBox::Ok, this);
    box.setInformativeText(notices.join(QLatin1Char('\n')));
    box.exec();
}

void MainWindow::copyCommandLine() {
    QApplication::clipboard()->setText(
        commandText(m_session.foreignPlugin(), m_document.inputs(), m_document.range(),
                    document::currentFilterTexts(m_session.catalog())));
    statusBar()->showMessage(tr("The command is on the clipboard"), 4000);
}

void MainWindow::showSweep(int objectId) {
    for (const InstanceId& id : KernelStore::instance().instances()) {
        if (id.objectId != objectId) continue;
        auto* dialog = new SweepDialog(m_document, m_state, id, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->show();
    }
}

void MainWindow::showExport() {
    if (m_export && m_export->isRunning()) {
        m_export->raise();
        return;
    }
    delete m_export;
    if (KernelStore::instance().instances().empty() || !m_document.source()) {
        QMessageBox::information(this, tr("Export"),
                                 tr("There is nothing to render yet: open a picture and apply a "
                                    "filter."));
        return;
    }
    const bool isSequence = m_state.frames().size() > 1;
    const QFileInfo input(QFile::decodeName(m_document.inputs().front().c_str()));
    const QString folder = input.absolutePath();
    const QString name =
        isSequence ? folder + QStringLiteral("/filtered/")
                   : QStringLiteral("%1/%2-filtered.png").arg(folder, input.completeBaseName());
    m_export = new ExportDialog(name, isSequence, m_session.foreignPlugin(), this);
    m_export->setProject(m_document.projectBytes(m_export->projectFile()));
    m_export->setAttribute(Qt::WA_DeleteOnClose);
    m_export->show();
}

void MainWindow::offerRecovery() {
    for (const Journal::Left& left : m_journal->findLeft()) {
        const QString name =
            left.path.isEmpty() ? tr("an unsaved project") : QFileInfo(left.path).fileName();
        QMessageBox box(QMessageBox::Question, tr("Recover"),
                        tr("The editor ended unexpectedly while %1 had unsaved changes (%2).")
                            .arg(name, QLocale().toString(left.when, QLocale::ShortFormat)),
                        QMessageBox::NoButton, this);
        const int side = 32;
        box.setIconPixmap(glyphIcon(Glyph::Warning).pixmap(side, side));
        box.setInformativeText(tr("Recovering overwrites no file: you decide whether to save."));
        QPushButton* recover = box.addButton(tr("&Recover"), QMessageBox::AcceptRole);
        QPushButton* remove = box.addButton(tr("&Discard"), QMessageBox::DestructiveRole);
        box.addButton(tr("&Later"), QMessageBox::RejectRole);
        box.exec();
        if (box.clickedButton() == remove) Journal::discard(left);
        if (box.clickedButton() != recover) continue;
        QStringList notices;
        if (!attempt(this, tr("This cannot be recovered"),
                     [&] { notices = m_document.recover(left.project, left.path); }))
            continue;
        m_journal->writeNow();  // under this program's name before the old one goes
        Journal::discard(left);
        showNotices(notices);
        return;
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
    for (QAction* action : std::as_const(m_needsPicture)) action->setEnabled(isOpen);
    const bool isSequence = m_state.frames().size() > 1;
    for (QAction* action : std::as_const(m_needsFrames)) action->setEnabled(isSequence);
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
    if (!confirmDiscard()) {
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
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
    event->acceptProposedAction();
    // The program that drags waits for the end of this event: no question may come in it.
    QMetaObject::invokeMethod(
        this, [this, paths] { open(paths); }, Qt::QueuedConnection);
}

}  // namespace editor
