#pragma once

#include <QTimer>
#include <QWidget>

#include "host/editor/Mailbox.h"
#include "host/editor/ObjectCounter.h"
#include "host/editor/TimelineView.h"

class QSpinBox;
class QToolButton;

namespace editor {

class EditorDocument;
class PreviewController;

/// The timeline with its buttons; plays, and has the objects of all frames counted when nothing was
/// edited for a moment.
class TimelinePanel : public QWidget {
    Q_OBJECT

public:
    TimelinePanel(EditorDocument& document, EditorState& state, PreviewController& preview,
                  QWidget* parent = nullptr);

    TimelineKeys& keys() { return *m_keys; }
    void togglePlay();
    bool isPlaying() const { return m_play.isActive(); }

private:
    void showFrames();
    void restartCount();
    void count();

    EditorDocument& m_document;
    EditorState& m_state;
    PreviewController& m_preview;
    TimelineKeys* m_keys;
    TimelineView* m_view;
    QToolButton* m_playButton;
    QSpinBox* m_frame;
    QTimer m_play, m_pause;
    quint64 m_job = 0;
    struct Counted {
        quint64 job;
        qint64 frame;
        int objects;
    };
    Mailbox<Counted> m_counted;
    ObjectCounter m_counter;  // last: its thread ends before the rest goes
};

}  // namespace editor
