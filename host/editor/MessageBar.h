#pragma once

#include <QFrame>

#include "host/editor/EditorState.h"

class QVBoxLayout;

namespace editor {

/// What is wrong with the frame that is shown, and what to do: a line each for the first of them,
/// none when all is well.
class MessageBar : public QFrame {
    Q_OBJECT

public:
    explicit MessageBar(EditorState& state, QWidget* parent = nullptr);

    QStringList messages() const { return m_messages; }

private:
    void showMessages();

    EditorState& m_state;
    QVBoxLayout* m_layout;
    QStringList m_messages;
};

}  // namespace editor
