#pragma once

#include <QObject>
#include <QTimer>

#include "host/editor/EditorState.h"
#include "host/editor/Mailbox.h"
#include "host/editor/PreviewWorker.h"

namespace editor {

class EditorDocument;

/// Asks for a new picture whenever the store, the input or what is to be shown has changed, and
/// hands what comes to the state. While a mouse button is down and the full picture takes longer
/// than kQuickEnough, a reduced one is asked for; the full one follows the release. Knows no
/// widget. GUI thread.
class PreviewController : public QObject {
    Q_OBJECT

public:
    PreviewController(EditorDocument& document, EditorState& state, QObject* parent = nullptr);
    ~PreviewController() override;

    /// True when nothing is being rendered or waits for it.
    bool isIdle() const { return !m_isRequested && m_answered == m_asked; }

signals:
    void idle();

private:
    void chainChanged();
    void request();
    std::vector<Objection> objectionsToKeys() const;
    void deliver(std::shared_ptr<const Preview> preview);

    EditorDocument& m_document;
    EditorState& m_state;
    std::shared_ptr<document::ChainRenderer> m_chain;
    QString m_chainProblem;
    QTimer m_refine;  ///< looks whether a drag is over
    bool m_isRequested = false;
    double m_fullMilliseconds = 0;  ///< what the full picture last took
    quint64 m_asked = 0, m_answered = 0;
    Mailbox<std::shared_ptr<const Preview>> m_arrived;
    PreviewWorker m_worker;  // last: its thread ends before the rest goes
};

}  // namespace editor
