#include "host/editor/ChainPanel.h"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QSlider>
#include <QStringList>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>
#include <utility>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/PageLabels.h"
#include "host/editor/Glyphs.h"
#include "host/editor/Texts.h"
#include "host/kernel/KernelNotifier.h"
#include "host/kernel/KernelStore.h"

namespace editor {

namespace {

constexpr int kBarWidth = 22;

QToolButton* smallButton(QWidget* parent, Glyph glyph, const QString& toolTip) {
    auto* button = new QToolButton(parent);
    button->setIcon(glyphIcon(glyph));
    button->setIconSize({14, 14});
    button->setFixedSize(kBarWidth, kBarWidth);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    return button;
}

QToolButton* eyeButton(QWidget* parent, const QString& toolTip) {
    QToolButton* button = smallButton(parent, Glyph::Eye, toolTip);
    button->setObjectName(QStringLiteral("theTbShow"));
    button->setCheckable(true);
    return button;
}

FxGuiImageFilter* entryOf(InstanceId id) {
    HkFilterManipulator* manipulator = KernelStore::instance().manipulator(id.typeId);
    return manipulator ? manipulator->getFilterGui(id.objectId) : nullptr;
}

void drawFocus(QWidget& row) {
    if (!row.hasFocus()) return;
    QPainter painter(&row);
    painter.setPen(row.palette().color(QPalette::Highlight));
    painter.drawRect(row.rect().adjusted(0, 0, -1, -1));
}

/// The controls of a page as the page labels them, for those who do not see it.
void nameControls(QWidget& page) {
    for (QWidget* control : page.findChildren<QWidget*>()) {
        if (control->focusPolicy() == Qt::NoFocus || !control->accessibleName().isEmpty() ||
            qobject_cast<QAbstractButton*>(control))
            continue;
        const document::PageLabels labels = document::labelsOf(control, {});
        QStringList texts = {labels.before, labels.after};
        texts.removeAll(QString());
        control->setAccessibleName(texts.join(QStringLiteral(" – ")));
        if (control->accessibleDescription().isEmpty())
            control->setAccessibleDescription(control->toolTip());
    }
}

/// Takes hold of a row; the row follows the pointer through dragged().
class Grip : public QWidget {
public:
    Grip(QWidget* parent, std::function<void(int)> dragged, std::function<void()> dropped)
        : QWidget(parent), m_dragged(std::move(dragged)), m_dropped(std::move(dropped)) {
        setObjectName(QStringLiteral("grip"));
        setCursor(Qt::OpenHandCursor);
        setToolTip(ChainPanel::tr("Drag to change the order (Alt+Up, Alt+Down)"));
        setFixedWidth(kBarWidth);
        setMinimumHeight(18);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QRect field(QPoint((width() - 14) / 2, (height() - 14) / 2), QSize(14, 14));
        glyphIcon(Glyph::Grip).paint(&painter, field, Qt::AlignCenter, QIcon::Disabled);
    }
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton) setCursor(Qt::ClosedHandCursor);
        m_isDragging = false;
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        if (!(event->buttons() & Qt::LeftButton)) return;
        m_isDragging = true;
        m_dragged(mapTo(parentWidget()->parentWidget(), event->pos()).y());
    }
    void mouseReleaseEvent(QMouseEvent*) override {
        setCursor(Qt::OpenHandCursor);
        if (std::exchange(m_isDragging, false)) m_dropped();
    }

private:
    std::function<void(int)> m_dragged;
    std::function<void()> m_dropped;
    bool m_isDragging = false;
};

}  // namespace

/// One end of the chain.
class StageRow : public QWidget {
public:
    StageRow(const QString& title, const QString& toolTip, QWidget* parent) : QWidget(parent) {
        setFocusPolicy(Qt::StrongFocus);
        setAccessibleName(title);
        setAccessibleDescription(toolTip);
        m_eye = eyeButton(this, toolTip);
        m_label = new QLabel(title, this);
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(6);
        layout->addWidget(m_eye);
        layout->addWidget(m_label, 1);
        setToolTip(ChainPanel::tr("%1 (Return)").arg(toolTip));
    }
    QToolButton* eye() const { return m_eye; }
    void setShown(bool shown) {
        m_eye->setChecked(shown);
        QFont font = m_label->font();
        font.setBold(shown);
        m_label->setFont(font);
    }
    void setNote(const QString& title, const QString& note) {
        m_label->setText(note.isEmpty() ? title : title + QStringLiteral("  ·  ") + note);
    }

protected:
    void paintEvent(QPaintEvent*) override { drawFocus(*this); }
    void focusInEvent(QFocusEvent*) override { update(); }
    void focusOutEvent(QFocusEvent*) override { update(); }
    void mousePressEvent(QMouseEvent*) override { m_eye->click(); }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            m_eye->click();
        else
            QWidget::keyPressEvent(event);
    }

private:
    QToolButton* m_eye;
    QLabel* m_label;
};

/// One applied filter.
class EntryRow : public QWidget {
public:
    EntryRow(ChainPanel& panel, FxGuiImageFilter* entry, QWidget* parent)
        : QWidget(parent), m_panel(panel), m_entry(entry), m_objectId(entry->objectId()) {
        setObjectName(QStringLiteral("entryRow"));
        setFocusPolicy(Qt::StrongFocus);
        showName();
        m_eye = eyeButton(this, ChainPanel::tr("Shows the picture after this filter (Return)"));
        m_fold = smallButton(this, Glyph::Expanded,
                             ChainPanel::tr("Folds or unfolds the settings (Left, Right)"));
        m_fold->setObjectName(QStringLiteral("theTbFold"));
        auto* more =
            smallButton(this, Glyph::More, ChainPanel::tr("More for this filter (menu key)"));
        more->setObjectName(QStringLiteral("theTbMore"));
        QObject::connect(more, &QToolButton::clicked, this, [this, more] {
            emit m_panel.menuRequested(m_objectId, more->mapToGlobal(more->rect().bottomLeft()));
        });
        m_warning = smallButton(this, Glyph::Warning, QString());
        m_warning->hide();
        auto* grip = new Grip(
            this, [this](int y) { m_panel.dragTo(this, y); }, [this] { m_panel.drop(this); });
        auto* bar = new QVBoxLayout;
        bar->setContentsMargins(0, 2, 0, 2);
        bar->setSpacing(0);
        bar->addWidget(m_eye);
        bar->addWidget(m_fold);
        bar->addWidget(more);
        bar->addWidget(m_warning);
        bar->addWidget(grip, 1);
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(6);
        layout->addLayout(bar);
        layout->addWidget(entry, 1);
        entry->show();
        // A page may tell of a drag at its end only, for a host that is slow. This one follows.
        for (QSlider* slider : entry->findChildren<QSlider*>()) slider->setTracking(true);
        nameControls(*entry);

        QObject::connect(m_eye, &QToolButton::clicked, this, [this] { toggleShown(); });
        QObject::connect(m_fold, &QToolButton::clicked, this, [this] { setFolded(!m_isFolded); });
        QObject::connect(m_warning, &QToolButton::clicked, this, [this] { toggleShown(); });
    }

    int objectId() const { return m_objectId; }
    FxGuiImageFilter* entry() const { return m_entry; }

    void setShown(bool shown) {
        m_eye->setChecked(shown);
        m_isShown = shown;
        update();
    }
    void setObjections(const QStringList& texts) {
        m_warning->setVisible(!texts.isEmpty());
        m_warning->setToolTip(texts.join(QLatin1Char('\n')));
        m_warning->setAccessibleName(texts.join(QLatin1Char('\n')));
        setAccessibleDescription(m_warning->accessibleName());
    }
    void showName() { setAccessibleName(KernelStore::instance().nameOf(m_objectId)); }
    void setFolded(bool folded) {
        m_isFolded = folded;
        m_fold->setIcon(glyphIcon(folded ? Glyph::Collapsed : Glyph::Expanded));
        if (m_entry->controlPage) m_entry->controlPage->setVisible(!folded);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        if (m_isShown)
            QPainter(this).fillRect(0, 0, 3, height(), palette().color(QPalette::Highlight));
        drawFocus(*this);
    }
    void focusInEvent(QFocusEvent*) override { update(); }
    void focusOutEvent(QFocusEvent*) override { update(); }
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton) toggleShown();
    }
    void contextMenuEvent(QContextMenuEvent* event) override {
        emit m_panel.menuRequested(m_objectId, event->globalPos());
    }
    void keyPressEvent(QKeyEvent* event) override {
        const bool withAlt = event->modifiers() & Qt::AltModifier;
        if (event->key() == Qt::Key_Delete && hasFocus())
            m_entry->manipulator()->removeFilter(m_entry);
        else if (withAlt && event->key() == Qt::Key_Up)
            m_panel.moveBy(m_objectId, -1);
        else if (withAlt && event->key() == Qt::Key_Down)
            m_panel.moveBy(m_objectId, 1);
        else if (hasFocus() && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
            toggleShown();
        else if ((event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) && hasFocus())
            setFolded(event->key() == Qt::Key_Left);
        else if (event->key() == Qt::Key_F2)
            emit m_panel.renameRequested(m_objectId);
        else if (event->key() == Qt::Key_D && event->modifiers() == Qt::ControlModifier)
            emit m_panel.duplicateRequested(m_objectId);
        else
            QWidget::keyPressEvent(event);
    }

private:
    void toggleShown() {
        EditorState& state = m_panel.m_state;
        state.setShownStage(state.shownStage() == m_objectId ? kResultStage : m_objectId);
        m_panel.showStage();
    }

    ChainPanel& m_panel;
    FxGuiImageFilter* m_entry;
    int m_objectId;
    QToolButton* m_eye;
    QToolButton* m_fold;
    QToolButton* m_warning;
    bool m_isShown = false;
    bool m_isFolded = false;
};

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
    hint->setContentsMargins(kBarWidth + 6, 4, 4, 4);
    m_hint = hint;
    m_dropLine = new QWidget(m_content);
    m_dropLine->setAutoFillBackground(true);
    m_dropLine->setBackgroundRole(QPalette::Highlight);
    m_dropLine->hide();
    setWidget(m_content);

    connect(m_source->eye(), &QToolButton::clicked, this, [this] {
        m_state.setShownStage(kSourceStage);
        showStage();
    });
    connect(m_result->eye(), &QToolButton::clicked, this, [this] {
        m_state.setShownStage(kResultStage);
        showStage();
    });
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

void ChainPanel::showOrder() {
    m_order.clear();
    std::map<int, EntryRow*> rows;
    while (QLayoutItem* item = m_layout->takeAt(0)) delete item;
    m_layout->addWidget(m_source);
    for (const InstanceId& id : KernelStore::instance().instances()) {
        FxGuiImageFilter* entry = entryOf(id);
        if (!entry) continue;
        EntryRow* row = m_rows.count(id.objectId) ? m_rows[id.objectId] : nullptr;
        if (!row || row->entry() != entry) row = new EntryRow(*this, entry, m_content);
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
        m_result->setNote(tr("Result"),
                          preview.objectCount ? objectCountText(*preview.objectCount) : QString());
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

void ChainPanel::dragTo(EntryRow*, int y) {
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
