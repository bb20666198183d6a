#include "host/editor/MessageBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <utility>

#include "host/editor/Glyphs.h"
#include "host/kernel/KernelStore.h"

namespace editor {

MessageBar::MessageBar(EditorState& state, QWidget* parent) : QFrame(parent), m_state(state) {
    setObjectName(QStringLiteral("messageBar"));
    setAccessibleName(tr("Warnings"));
    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(8, 4, 8, 4);
    m_layout->setSpacing(2);
    connect(&state, &EditorState::previewChanged, this, &MessageBar::showMessages);
    hide();
}

void MessageBar::showMessages() {
    const Preview& preview = *m_state.preview();
    QStringList messages;
    if (!preview.problem.isEmpty())
        messages << (preview.after ? tr("Shown without filters: %1").arg(preview.problem)
                                   : preview.problem);
    for (const Objection& objection : preview.objections)
        messages << KernelStore::instance().nameOf(objection.objectId) + QStringLiteral(": ") +
                        objection.text;
    if (messages == m_messages) return;
    m_messages = messages;
    while (QLayoutItem* item = m_layout->takeAt(0)) {
        item->widget()->deleteLater();
        delete item;
    }
    // More would leave no room for the picture; each is at its filter as well.
    const int mostLines = 3;
    QStringList lines = m_messages.mid(0, mostLines);
    if (m_messages.size() > mostLines)
        lines << tr("%1 more: see the signs at the filters").arg(m_messages.size() - mostLines);
    for (const QString& message : std::as_const(lines)) {
        auto* line = new QWidget(this);
        auto* icon = new QLabel(line);
        icon->setPixmap(glyphIcon(Glyph::Warning).pixmap(16, 16));
        auto* text = new QLabel(message, line);
        text->setTextFormat(Qt::PlainText);
        text->setWordWrap(true);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        auto* layout = new QHBoxLayout(line);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(icon, 0, Qt::AlignTop);
        layout->addWidget(text, 1);
        m_layout->addWidget(line);
    }
    setVisible(!m_messages.isEmpty());
}

}  // namespace editor
