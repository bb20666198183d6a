#include "host/editor/ChainPanel.h"

#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/editor/ChainRows.h"
#include "host/editor/Texts.h"
#include "host/kernel/KernelNotifier.h"
#include "host/kernel/KernelStore.h"

namespace editor {

namespace {

FxGuiImageFilter* entryOf(InstanceId id) {
    HkFilterManipulator* manipulator = KernelStore::instance().manipulator(id.typeId);
    return manipulator ? manipulator->getFilterGui(id.objectId) : nullptr;
}

}  // namespace

ChainPanel::ChainPanel(EditorState& state, QWidget* parent) : QScrollArea(parent), m_state(state) {
    setObjectName(QStringLiteral("chainPanel"));
    setAccessibleName(tr("Applied filters"));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_content = new QWidget;
    m_layout = new QVBoxLayout(m_content);
    m_layout->setContentsMargins(6, 6, 6, 6);
    m_layout->setSpacing(6);
    m_source = new StageRow(tr("Source"), tr("Shows the picture without any filter"), m_content);
    m_result = new StageRow(tr("Result"), tr("Shows the picture after all filters"), m_content);
    auto* hint =
        new QLabel(tr("No filters yet. Choose one under “Filters” and press “Add”."), m_content);
    hint->setWordWrap(true);
    hint->setForegroundRole(QPalette::PlaceholderText);
    hint->setContentsMargins(kRowBarWidth + 6, 4, 4, 4);
    m_hint = hint;
    m_dropLine = new QWidget(m_content);
    m_dropLine->setAutoFillBackground(true);
    m_dropLine->setBackgroundRole(QPalette::Highlight);
    m_dropLine->hide();
    setWidget(m_content);

    connect(m_source, &StageRow::chosen, this, [this] { look(kSourceStage); });
    connect(m_result, &StageRow::chosen, this, [this] { look(kResultStage); });
    KernelNotifier* const store = KernelNotifier::instance();
    connect(store, &KernelNotifier::orderChanged, this, &ChainPanel::showOrder);
    connect(store, &KernelNotifier::objectChanged, this, [this](int, int objectId) {
        if (m_rows.count(objectId)) m_rows[objectId]->showName();
    });
    // A filter that is new is to be seen at work, also when an earlier stage was looked at.
    connect(store, &KernelNotifier::objectAdded, this,
            [this] { m_state.setShownStage(kResultStage); });
    connect(store, &KernelNotifier::objectRemoved, this, [this](int, int objectId) {
        if (m_state.shownStage() == objectId) m_state.setShownStage(kResultStage);
    });
    connect(&state, &EditorState::shownStageChanged, this, &ChainPanel::showStage);
    connect(&state, &EditorState::previewChanged, this, &ChainPanel::showObjections);
    showOrder();
    showStage();
}

EntryRow* ChainPanel::makeRow(FxGuiImageFilter* entry) {
    auto* row = new EntryRow(entry, m_content);
    const int id = row->objectId();
    connect(row, &EntryRow::chosen, this,
            [this, id] { look(m_state.shownStage() == id ? kResultStage : id); });
    connect(row, &EntryRow::moved, this, [this, id](int places) { moveBy(id, places); });
    connect(row, &EntryRow::dragged, this, &ChainPanel::dragTo);
    connect(row, &EntryRow::dropped, this, [this, row] { drop(row); });
    connect(row, &EntryRow::renameRequested, this, [this, id] { emit renameRequested(id); });
    connect(row, &EntryRow::duplicateRequested, this, [this, id] { emit duplicateRequested(id); });
    connect(row, &EntryRow::menuRequested, this,
            [this, id](const QPoint& position) { emit menuRequested(id, position); });
    return row;
}

void ChainPanel::look(int stage) {
    m_state.setShownStage(stage);
    showStage();  // also when nothing changed: the eye that was clicked has
}

void ChainPanel::showOrder() {
    m_order.clear();
    std::map<int, EntryRow*> rows;
    while (QLayoutItem* item = m_layout->takeAt(0)) delete item;
    m_layout->addWidget(m_source);
    for (const InstanceId& id : KernelStore::instance().instances()) {
        FxGuiImageFilter* entry = entryOf(id);
        if (!entry) continue;
        EntryRow* row = m_rows.count(id.objectId) ? m_rows[id.objectId] : nullptr;
        if (!row || row->entry() != entry) row = makeRow(entry);
        rows[id.objectId] = row;
        m_rows.erase(id.objectId);
        m_order.push_back(id.objectId);
        m_layout->addWidget(row);
        row->show();
    }
    // The entry of a removed filter is a child of its row and goes with it, when control returns.
    for (const auto& [objectId, row] : m_rows) {
        row->hide();
        row->deleteLater();
    }
    m_rows = rows;
    m_hint->setVisible(m_order.empty());
    m_layout->addWidget(m_hint);
    m_layout->addWidget(m_result);
    m_layout->addStretch(1);
    // No page is cut off at its side: there is no scroll bar for that.
    const int widest = 340;
    setMinimumWidth(std::max(widest, m_content->minimumSizeHint().width() +
                                         style()->pixelMetric(QStyle::PM_ScrollBarExtent)));
    showStage();
}

void ChainPanel::showStage() {
    const int stage = m_state.shownStage();
    m_source->setShown(stage == kSourceStage);
    m_result->setShown(stage == kResultStage);
    for (const auto& [objectId, row] : m_rows) row->setShown(objectId == stage);
}

void ChainPanel::showObjections() {
    const Preview& preview = *m_state.preview();
    for (const auto& [objectId, row] : m_rows) {
        QStringList texts;
        for (const Objection& objection : preview.objections)
            if (objection.objectId == objectId) texts << objection.text;
        row->setObjections(texts);
    }
    if (preview.stage == kResultStage)
        m_result->setNote(preview.objectCount ? objectCountText(*preview.objectCount) : QString());
}

int ChainPanel::dropIndex(int y) const {
    int index = 0;
    for (const int objectId : m_order) {
        const QWidget* row = m_rows.at(objectId);
        if (y < row->y() + row->height() / 2) break;
        ++index;
    }
    return index;
}

void ChainPanel::dragTo(int y) {
    m_dropIndex = dropIndex(y);
    const auto count = static_cast<int>(m_order.size());
    const QWidget* next =
        m_dropIndex < count
            ? static_cast<QWidget*>(m_rows.at(m_order[static_cast<std::size_t>(m_dropIndex)]))
            : m_result;
    const int gap = m_layout->spacing() / 2;
    m_dropLine->setGeometry(6, next->y() - gap - 1, m_content->width() - 12, 2);
    m_dropLine->show();
    m_dropLine->raise();
    ensureVisible(0, y, 0, 40);
}

void ChainPanel::drop(EntryRow* row) {
    m_dropLine->hide();
    if (m_dropIndex < 0) return;
    const auto index = static_cast<std::size_t>(std::exchange(m_dropIndex, -1));
    FxGuiImageFilter* before =
        index < m_order.size() ? m_rows.at(m_order[index])->entry() : nullptr;
    row->entry()->manipulator()->moveFilter(row->entry(), before);
}

void ChainPanel::moveBy(int objectId, int places) {
    const auto place = std::find(m_order.begin(), m_order.end(), objectId);
    if (place == m_order.end()) return;
    // Moving down by one means to stand before the one after the next.
    const auto target = (place - m_order.begin()) + (places > 0 ? places + 1 : places);
    const auto count = static_cast<std::ptrdiff_t>(m_order.size());
    if (target < 0 || target > count) return;
    FxGuiImageFilter* entry = m_rows.at(objectId)->entry();
    FxGuiImageFilter* before =
        target < count ? m_rows.at(m_order[static_cast<std::size_t>(target)])->entry() : nullptr;
    entry->manipulator()->moveFilter(entry, before);
    m_rows.at(objectId)->setFocus();
}

}  // namespace editor
