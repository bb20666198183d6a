#pragma once

#include <QObject>
#include <QUndoStack>
#include <vector>

#include "host/kernel/CmdSetChain.h"

namespace editor {

/// Two versions of the whole chain, A and B, and a way from one to the other. B begins as a copy of
/// A. The change is a step like any other; going back at once takes that step back instead of
/// adding one.
class ChainSnapshots : public QObject {
    Q_OBJECT

public:
    explicit ChainSnapshots(QUndoStack& undoStack) : m_undoStack(undoStack) {}

    void toggle();
    void forget();  ///< another document
    bool isB() const { return m_isB; }

signals:
    void toggled();

private:
    QUndoStack& m_undoStack;
    std::vector<ChainItem> m_other;
    bool m_hasOther = false;
    bool m_isB = false;
    const QUndoCommand* m_lastToggle = nullptr;  // only compared, never used
};

}  // namespace editor
