#include "host/editor/MainMenus.h"

#include <QActionGroup>
#include <QDockWidget>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QSettings>
#include <QToolBar>
#include <utility>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/editor/ChainActions.h"
#include "host/editor/ChainSnapshots.h"
#include "host/editor/FileActions.h"
#include "host/editor/Glyphs.h"
#include "host/editor/PictureView.h"
#include "host/editor/StartPage.h"
#include "host/editor/Theme.h"
#include "host/editor/TimelinePanel.h"

namespace editor {

MainMenus::MainMenus(QMainWindow& window, const Parts& parts)
    : QObject(&window), m_window(window), m_parts(parts) {
    buildFileMenu();
    buildEditMenu();
    buildFilterMenu();
    buildFrameMenu();
    buildViewMenu();
    connect(&parts.files, &FileActions::recentChanged, this, &MainMenus::showRecent);
    showRecent();
}

QAction* MainMenus::addAction(QMenu* menu, const QString& text, const QKeySequence& keys,
                              const char* name, const std::function<void()>& action) {
    QAction* made = menu->addAction(text);
    made->setObjectName(QLatin1String(name));
    made->setShortcut(keys);
    connect(made, &QAction::triggered, this, action);
    return made;
}

void MainMenus::setAvailable(bool isOpen, bool isSequence) {
    for (QAction* action : std::as_const(m_needsPicture)) action->setEnabled(isOpen);
    for (QAction* action : std::as_const(m_needsFrames)) action->setEnabled(isSequence);
}

void MainMenus::showRecent() {
    m_recentMenu->clear();
    const QStringList entries = m_parts.files.recent();
    for (const QString& entry : entries)
        connect(m_recentMenu->addAction(recentTitle(entry).replace('&', "&&")), &QAction::triggered,
                this, [=] { m_parts.files.openRecent(entry); });
    m_recentMenu->addSeparator();
    connect(m_recentMenu->addAction(tr("&Forget all")), &QAction::triggered, &m_parts.files,
            &FileActions::forgetRecent);
    m_recentMenu->setEnabled(!entries.isEmpty());
}

void MainMenus::buildFileMenu() {
    QMenu* menu = m_window.menuBar()->addMenu(tr("&File"));
    addAction(menu, tr("&Open…"), QKeySequence::Open, "actOpen",
              [this] { m_parts.files.askForFiles(); });
    addAction(menu, tr("Open &folder…"), tr("Ctrl+Shift+O"), "actOpenFolder",
              [this] { m_parts.files.askForFolder(); });
    m_recentMenu = menu->addMenu(tr("Open &recent"));
    m_needsPicture << addAction(menu, tr("Replace &input…"), {}, "actReplaceInput",
                                [this] { m_parts.files.askForOtherInput(); });
    menu->addSeparator();
    m_needsPicture << addAction(menu, tr("&Save project"), QKeySequence::Save, "actSave",
                                [this] { m_parts.files.save(); });
    m_needsPicture << addAction(menu, tr("Save project &as…"), tr("Ctrl+Shift+S"), "actSaveAs",
                                [this] { m_parts.files.askAndSave(); });
    menu->addSeparator();
    m_needsPicture << addAction(menu, tr("&Export…"), tr("Ctrl+E"), "actExport",
                                [this] { m_parts.files.showExport(); });
    m_needsPicture << addAction(menu, tr("&Copy as command line"), tr("Ctrl+Shift+C"),
                                "actCopyCommand", [this] { m_parts.files.copyCommandLine(); });
    menu->addSeparator();
    m_needsPicture << addAction(menu, tr("C&lose"), tr("Ctrl+W"), "actClose",
                                [this] { m_parts.files.closeDocument(); });
    addAction(menu, tr("&Quit"), tr("Ctrl+Q"), "actQuit", [this] { m_window.close(); });
}

void MainMenus::buildEditMenu() {
    QMenu* menu = m_window.menuBar()->addMenu(tr("&Edit"));
    QAction* undo = m_parts.session.undoStack().createUndoAction(menu, tr("&Undo"));
    undo->setShortcut(QKeySequence::Undo);
    undo->setObjectName(QStringLiteral("actUndo"));
    QAction* redo = m_parts.session.undoStack().createRedoAction(menu, tr("&Redo"));
    redo->setShortcut(QKeySequence::Redo);
    redo->setObjectName(QStringLiteral("actRedo"));
    menu->addActions({undo, redo});
    menu->addSeparator();
    m_needsPicture << addAction(menu, tr("Switch between version &A and B"), tr("X"), "actToggleAB",
                                [this] { m_parts.snapshots.toggle(); });
    menu->addSeparator();
    QMenu* presets = menu->addMenu(tr("&Presets"));
    connect(presets, &QMenu::aboutToShow, this,
            [this, presets] { m_parts.filters.fillPresetMenu(*presets); });
    m_needsPicture << addAction(menu, tr("Paste &filters from text"), tr("Ctrl+Shift+V"),
                                "actPasteFilters", [this] { m_parts.filters.pasteFilters(); });
}

void MainMenus::buildFilterMenu() {
    QMenu* menu = m_window.menuBar()->addMenu(tr("F&ilters"));
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

void MainMenus::buildFrameMenu() {
    QMenu* menu = m_window.menuBar()->addMenu(tr("F&rames"));
    const auto add = [&](const QString& text, const char* keys, const char* name,
                         const std::function<void()>& action) {
        m_needsFrames << addAction(menu, text, QKeySequence(QLatin1String(keys)), name, action);
    };
    add(tr("&Play or stop"), "", "actPlay", [this] { m_parts.timeline.togglePlay(); });
    add(tr("&Next frame"), ".", "actNextFrame", [this] { m_parts.state.stepFrames(1); });
    add(tr("P&revious frame"), ",", "actPreviousFrame", [this] { m_parts.state.stepFrames(-1); });
    menu->addSeparator();
    add(tr("Ne&xt key"), "Ctrl+.", "actNextKey", [this] { m_parts.timeline.keys().goToKey(1); });
    add(tr("Pre&vious key"), "Ctrl+,", "actPreviousKey",
        [this] { m_parts.timeline.keys().goToKey(-1); });
    add(tr("&Make a key here"), "K", "actAddKey", [this] { m_parts.timeline.keys().addHere(); });
    add(tr("&Delete selected keys"), "", "actDeleteKeys",
        [this] { m_parts.timeline.keys().deleteSelected(); });
    add(tr("&Copy selected keys"), "", "actCopyKeys",
        [this] { m_parts.timeline.keys().copySelected(); });
    add(tr("Pas&te keys here"), "", "actPasteKeys", [this] { m_parts.timeline.keys().paste(); });
}

void MainMenus::buildViewMenu() {
    QMenu* menu = m_window.menuBar()->addMenu(tr("&View"));
    auto* bar = new QToolBar(tr("View"), &m_window);
    bar->setObjectName(QStringLiteral("viewBar"));
    bar->setIconSize({18, 18});
    bar->setMovable(false);
    m_window.addToolBar(bar);

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
    addView(tr("&Fit"), tr("Ctrl+0"), "actFit", Glyph::Fit, [this] { m_parts.state.setZoom(0); });
    addView(tr("&100 %"), tr("Ctrl+1"), "actOneToOne", Glyph::OneToOne,
            [this] { m_parts.state.setZoom(1); });
    m_needsPicture << addAction(menu, tr("Zoom &in"), QKeySequence::ZoomIn, "actZoomIn",
                                [this] { m_parts.view.zoomBy(1.25); });
    m_needsPicture << addAction(menu, tr("Zoom &out"), QKeySequence::ZoomOut, "actZoomOut",
                                [this] { m_parts.view.zoomBy(0.8); });
    menu->addSeparator();
    bar->addSeparator();
    auto* comparisons = new QActionGroup(this);
    const auto addComparison = [&](const QString& text, const char* keys, const char* name,
                                   Glyph glyph, Comparison comparison) {
        QAction* made = addView(text, QKeySequence(QLatin1String(keys)), name, glyph,
                                [this, comparison] { m_parts.state.setComparison(comparison); });
        made->setCheckable(true);
        made->setChecked(comparison == m_parts.state.comparison());
        comparisons->addAction(made);
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
    for (QDockWidget* dock : m_window.findChildren<QDockWidget*>())
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

}  // namespace editor
