#pragma once

#include <QWidget>
#include <map>
#include <vector>

#include "host/editor/TimelineKeys.h"
#include "host/editor/TimelineScale.h"

namespace editor {

/// Frames from left to right: a ruler, a lane with the keys of each animated instance, and the
/// number of objects as a curve. Draws them and turns gestures into calls of TimelineKeys.
///
/// Mouse: a drag on ruler or curve scrubs; a click on a key takes hold of it (Ctrl: adds it), a
/// drag moves what is held, a drag over empty lanes takes hold of all keys in a rectangle, a double
/// click in a lane makes a key.
///
/// Keyboard: Left and Right step, with Ctrl from key to key; Up and Down choose a lane, in which
/// Insert makes a key at the current frame and Return takes hold of the one there. Of what is held:
/// Alt+Left and Alt+Right move it, Delete, Ctrl+C, Ctrl+V; Ctrl+A holds all, Escape none.
class TimelineView : public QWidget {
    Q_OBJECT

public:
    TimelineView(EditorState& state, TimelineKeys& keys, QWidget* parent = nullptr);

    void clearCounts();
    void setCount(qint64 frame, int count);

    QPoint placeOf(int objectId, qint64 frame) const;  ///< where a key is drawn
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {300, 80}; }

signals:
    void heightChanged();  ///< what it needs at least
    void laneChosen(const QRect& place);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    using Key = TimelineKeys::Key;

    const std::vector<TimelineKeys::Lane>& lanes() const { return m_keys.lanes(); }
    void fit();
    void showLane();
    void drawLanes(QPainter& painter);
    void drawCounts(QPainter& painter);
    void drawRuler(QPainter& painter);
    void drawKey(QPainter& painter, QPointF middle, bool isSelected) const;
    TimelineScale scale() const;
    bool keyAt(QPoint position, Key& key) const;

    EditorState& m_state;
    TimelineKeys& m_keys;
    int m_lane = 0;  ///< the one that keys of the keyboard are for
    std::map<qint64, int> m_counts;

    enum class Drag { None, Scrub, Keys, Rubber } m_drag = Drag::None;
    QPoint m_pressed, m_pointer;
    bool m_hasMoved = false;
    qint64 m_moveBy = 0;
};

}  // namespace editor
