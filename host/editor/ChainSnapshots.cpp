#include "host/editor/ChainSnapshots.h"

#include <QCoreApplication>
#include <utility>

namespace editor {

void ChainSnapshots::toggle() {
    std::vector<ChainItem> present = currentChain();
    if (!m_hasOther) m_other = present;
    m_hasOther = true;
    m_isB = !m_isB;
    const int top = m_undoStack.index() - 1;
    if (top >= 0 && m_lastToggle && m_undoStack.command(top) == m_lastToggle) {
        m_lastToggle = nullptr;
        m_undoStack.undo();
    } else {
        const int before = m_undoStack.index();
        m_undoStack.push(new CmdSetChain(QCoreApplication::translate("editor", "Show version %1")
                                             .arg(QLatin1Char(m_isB ? 'B' : 'A')),
                                         m_other));
        m_lastToggle =
            m_undoStack.index() > before ? m_undoStack.command(m_undoStack.index() - 1) : nullptr;
    }
    m_other = std::move(present);
    emit toggled();
}

void ChainSnapshots::forget() {
    m_other.clear();
    m_hasOther = m_isB = false;
    m_lastToggle = nullptr;
}

}  // namespace editor
