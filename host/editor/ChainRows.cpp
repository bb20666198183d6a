#include "host/editor/ChainRows.h"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QSlider>
#include <QStringList>
#include <QToolButton>
#include <QVBoxLayout>
#include <functional>
#include <utility>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/PageLabels.h"
#include "host/editor/Glyphs.h"
#include "host/kernel/KernelStore.h"

namespace editor {

namespace {

QToolButton* smallButton(QWidget* parent, Glyph glyph, const QString& toolTip) {
    auto* button = new QToolButton(parent);
    button->setIcon(glyphIcon(glyph));
    button->setIconSize({14, 14});
    button->setFixedSize(kRowBarWidth, kRowBarWidth);
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
        setToolTip(EntryRow::tr("Drag to change the order (Alt+Up, Alt+Down)"));
        setFixedWidth(kRowBarWidth);
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

// --- One end of the chain ---

StageRow::StageRow(const QString& title, const QString& toolTip, QWidget* parent)
    : QWidget(parent), m_title(title) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(title);
    setAccessibleDescription(toolTip);
    setToolTip(tr("%1 (Return)").arg(toolTip));
    m_eye = eyeButton(this, toolTip);
    m_label = new QLabel(title, this);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(m_eye);
    layout->addWidget(m_label, 1);
    connect(m_eye, &QToolButton::clicked, this, &StageRow::chosen);
}

void StageRow::setShown(bool shown) {
    m_eye->setChecked(shown);
    QFont font = m_label->font();
    font.setBold(shown);
    m_label->setFont(font);
}

void StageRow::setNote(const QString& note) {
    m_label->setText(note.isEmpty() ? m_title : m_title + QStringLiteral("  ·  ") + note);
    setAccessibleName(m_label->text());
}

void StageRow::paintEvent(QPaintEvent*) {
    drawFocus(*this);
}

void StageRow::focusInEvent(QFocusEvent*) {
    update();
}

void StageRow::focusOutEvent(QFocusEvent*) {
    update();
}

void StageRow::mousePressEvent(QMouseEvent*) {
    emit chosen();
}

void StageRow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        emit chosen();
    else
        QWidget::keyPressEvent(event);
}

// --- One applied filter ---

EntryRow::EntryRow(FxGuiImageFilter* entry, QWidget* parent)
    : QWidget(parent), m_entry(entry), m_objectId(entry->objectId()) {
    setObjectName(QStringLiteral("entryRow"));
    setFocusPolicy(Qt::StrongFocus);
    showName();
    m_eye = eyeButton(this, tr("Shows the picture after this filter (Return)"));
    m_fold = smallButton(this, Glyph::Expanded, tr("Folds or unfolds the settings (Left, Right)"));
    m_fold->setObjectName(QStringLiteral("theTbFold"));
    auto* more = smallButton(this, Glyph::More, tr("More for this filter (menu key)"));
    more->setObjectName(QStringLiteral("theTbMore"));
    m_warning = smallButton(this, Glyph::Warning, QString());
    m_warning->hide();
    auto* grip = new Grip(
        this, [this](int y) { emit dragged(y); }, [this] { emit dropped(); });
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

    connect(m_eye, &QToolButton::clicked, this, &EntryRow::chosen);
    connect(m_warning, &QToolButton::clicked, this, &EntryRow::chosen);
    connect(m_fold, &QToolButton::clicked, this, [this] { setFolded(!m_isFolded); });
    connect(more, &QToolButton::clicked, this,
            [this, more] { emit menuRequested(more->mapToGlobal(more->rect().bottomLeft())); });
}

void EntryRow::setShown(bool shown) {
    m_eye->setChecked(shown);
    m_isShown = shown;
    update();
}

void EntryRow::setObjections(const QStringList& texts) {
    m_warning->setVisible(!texts.isEmpty());
    m_warning->setToolTip(texts.join(QLatin1Char('\n')));
    m_warning->setAccessibleName(texts.join(QLatin1Char('\n')));
    setAccessibleDescription(m_warning->accessibleName());
}

void EntryRow::showName() {
    setAccessibleName(KernelStore::instance().nameOf(m_objectId));
}

void EntryRow::setFolded(bool folded) {
    m_isFolded = folded;
    m_fold->setIcon(glyphIcon(folded ? Glyph::Collapsed : Glyph::Expanded));
    if (m_entry->controlPage) m_entry->controlPage->setVisible(!folded);
}

void EntryRow::paintEvent(QPaintEvent*) {
    if (m_isShown) QPainter(this).fillRect(0, 0, 3, height(), palette().color(QPalette::Highlight));
    drawFocus(*this);
}

void EntryRow::focusInEvent(QFocusEvent*) {
    update();
}

void EntryRow::focusOutEvent(QFocusEvent*) {
    update();
}

void EntryRow::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) emit chosen();
}

void EntryRow::contextMenuEvent(QContextMenuEvent* event) {
    emit menuRequested(event->globalPos());
}

void EntryRow::keyPressEvent(QKeyEvent* event) {
    const bool withAlt = event->modifiers() & Qt::AltModifier;
    if (event->key() == Qt::Key_Delete && hasFocus())
        m_entry->manipulator()->removeFilter(m_entry);
    else if (withAlt && event->key() == Qt::Key_Up)
        emit moved(-1);
    else if (withAlt && event->key() == Qt::Key_Down)
        emit moved(1);
    else if (hasFocus() && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        emit chosen();
    else if ((event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) && hasFocus())
        setFolded(event->key() == Qt::Key_Left);
    else if (event->key() == Qt::Key_F2)
        emit renameRequested();
    else if (event->key() == Qt::Key_D && event->modifiers() == Qt::ControlModifier)
        emit duplicateRequested();
    else
        QWidget::keyPressEvent(event);
}

}  // namespace editor
