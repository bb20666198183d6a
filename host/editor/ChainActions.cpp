#include "host/editor/ChainActions.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <exception>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/FilterSettings.h"
#include "host/editor/Attempt.h"
#include "host/editor/Presets.h"
#include "host/kernel/CmdSetChain.h"

namespace editor {

ChainActions::ChainActions(EditorSession& session, QWidget* window)
    : QObject(window), m_session(session), m_window(window) {}

void ChainActions::duplicate(int objectId) {
    std::vector<ChainItem> chain = currentChain();
    for (auto item = chain.begin(); item != chain.end(); ++item) {
        if (item->id.objectId != objectId) continue;
        const ChainItem copy{{item->id.typeId, -1}, item->state};
        const QString name = KernelStore::instance().nameOf(objectId);
        chain.insert(item + 1, copy);
        m_session.undoStack().push(new CmdSetChain(tr("Duplicate %1").arg(name), chain));
        return;
    }
}

void ChainActions::rename(int objectId) {
    const KernelStore& store = KernelStore::instance();
    auto state = store.state(objectId);
    if (!state) return;
    const QString former = store.nameOf(objectId);
    bool isConfirmed = false;
    const QString name = QInputDialog::getText(m_window, tr("Rename"),
                                               tr("Name of the filter; empty for its own title"),
                                               QLineEdit::Normal, former, &isConfirmed)
                             .simplified();
    if (!isConfirmed || name == former) return;
    state->name = name;
    setState(objectId, *state, tr("%1: renamed").arg(former));
}

void ChainActions::showMenu(int objectId, const QPoint& globalPosition) {
    const KernelStore& store = KernelStore::instance();
    const auto state = store.state(objectId);
    if (!state) return;
    const int position = store.positionOf(objectId);
    const int typeId = store.instances()[static_cast<std::size_t>(position)].typeId;
    HkFilterManipulator* manipulator = store.manipulator(typeId);
    const QString name = store.nameOf(objectId);
    const QString text = document::textFromSettings(typeId, *state, m_session.catalog());
    QMenu menu;
    menu.addAction(tr("&Try values…"), this, [=] { emit sweepRequested(objectId); });
    menu.addSeparator();
    menu.addAction(tr("Re&name…"), this, [=] { rename(objectId); });
    menu.addAction(tr("&Duplicate"), this, [=] { duplicate(objectId); });
    menu.addAction(tr("&Copy as text"), this, [=] { QApplication::clipboard()->setText(text); });
    menu.addAction(tr("&Save as preset…"), this, [=] { savePreset({text}); });
    fillPresetMenuOf(objectId, typeId, *menu.addMenu(tr("Appl&y preset")));
    menu.addAction(tr("&Reset to defaults"), this, [=] {
        InstanceState fresh = defaultState(m_session.catalog().descriptor(typeId));
        fresh.name = state->name;
        setState(objectId, fresh, tr("%1: reset").arg(name));
    });
    menu.addSeparator();
    menu.addAction(tr("Re&move"), this,
                   [=] { manipulator->removeFilter(manipulator->getFilterGui(objectId)); });
    menu.exec(globalPosition);
}

/// The presets that are of one filter of this type: they set up the one that is there.
void ChainActions::fillPresetMenuOf(int objectId, int typeId, QMenu& menu) {
    for (const Preset& preset : knownPresets()) {
        std::vector<document::FilterSetup> filters;
        try {
            filters = readPreset(preset.file, m_session.catalog());
        } catch (const std::exception&) {
            continue;  // the menu of all presets has it, and says what is wrong when it is chosen
        }
        if (filters.size() != 1 || filters.front().typeId != typeId) continue;
        menu.addAction(QString(preset.name).replace('&', "&&"), this, [=] {
            InstanceState state = filters.front().state;
            const KernelStore& store = KernelStore::instance();
            state.name = store.state(objectId)->name;
            setState(objectId, state, tr("%1: preset %2").arg(store.nameOf(objectId), preset.name));
        });
    }
    menu.setEnabled(!menu.isEmpty());
}

void ChainActions::setState(int objectId, const InstanceState& state, const QString& text) {
    std::vector<ChainItem> chain = currentChain();
    for (ChainItem& item : chain)
        if (item.id.objectId == objectId) item.state = state;
    m_session.undoStack().push(new CmdSetChain(text, chain));
}

void ChainActions::append(const std::vector<document::FilterSetup>& filters, const QString& text) {
    std::vector<ChainItem> chain = currentChain();
    for (const document::FilterSetup& filter : filters)
        chain.push_back({{filter.typeId, -1}, filter.state});
    m_session.undoStack().push(new CmdSetChain(text, chain));
}

void ChainActions::pasteFilters() {
    attempt(m_window, tr("The clipboard holds no filters"), [this] {
        const QStringList lines =
            QApplication::clipboard()->text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        append(document::readFilterTexts(lines, m_session.catalog()), tr("Paste filters"));
    });
}

void ChainActions::savePreset(const QStringList& filterTexts) {
    bool isConfirmed = false;
    const QString name =
        QInputDialog::getText(m_window, tr("Save as preset"), tr("Name of the preset"),
                              QLineEdit::Normal, QString(), &isConfirmed)
            .trimmed()
            .replace(QLatin1Char('/'), QLatin1Char('-'));
    if (!isConfirmed || name.isEmpty()) return;
    const QString file = QDir(presetFolder()).filePath(name + QStringLiteral(".fxpreset"));
    if (QFileInfo::exists(file) &&
        QMessageBox::question(m_window, tr("Save as preset"),
                              tr("There is a preset “%1”. Replace it?").arg(name)) !=
            QMessageBox::Yes)
        return;
    attempt(m_window, tr("The preset cannot be saved"), [&] { writePreset(file, filterTexts); });
}

void ChainActions::applyPreset(const QString& file) {
    attempt(m_window, tr("The preset cannot be applied"), [&] {
        append(readPreset(file, m_session.catalog()),
               tr("Apply preset %1").arg(QFileInfo(file).completeBaseName()));
    });
}

void ChainActions::fillPresetMenu(QMenu& menu) {
    menu.clear();
    QAction* saveChain = menu.addAction(tr("&Save all filters as preset…"), this, [this] {
        savePreset(document::currentFilterTexts(m_session.catalog()));
    });
    saveChain->setEnabled(!KernelStore::instance().instances().empty());
    menu.addAction(tr("&Apply preset from file…"), this, [this] {
        const QString file = QFileDialog::getOpenFileName(
            m_window, tr("Apply preset"), presetFolder(), tr("Presets (*.fxpreset)"));
        if (!file.isEmpty()) applyPreset(file);
    });
    menu.addSeparator();
    for (const Preset& preset : knownPresets())
        menu.addAction(QString(preset.name).replace('&', "&&"), this,
                       [this, file = preset.file] { applyPreset(file); });
}

}  // namespace editor
