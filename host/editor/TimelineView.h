#pragma once

#include <QUndoStack>
#include <QWidget>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "host/document/FilterCatalog.h"
#include "host/document/Keyframes.h"
#include "host/editor/EditorState.h"
#include "host/kernel/KernelStore.h"

namespace editor {

/// Frames from left to right: a ruler, a lane with the keys of each animated instance, and the
/// number of objects as a curve.
///
/// Mouse: a drag on ruler or curve scrubs; a click on a key takes hold of it (Ctrl: adds it), a
/// drag moves what is held, a drag over empty lanes takes hold of all keys in a rectangle, a double
/// click in a lane makes a key. Keys: Delete, Ctrl+A, Ctrl+C, Ctrl+V.
class TimelineView : public QWidget {
    Q_OBJECT

public:
    TimelineView(EditorState& state, QUndoStack& undoStack, const document::FilterCatalog& catalog,
                 QWidget* parent = nullptr);

    void addKeyHere();  ///< in the lanes that hold a selected key; in all when none does
    void deleteSelected();
    void copySelected();
    void paste();  ///< into the lanes as addKeyHere(), the earliest key at the current frame
    void goToKey(int direction);  ///< the nearest key after (1) or before (-1) the current frame

    void clearCounts();
    void setCount(qint64 frame, int count);

    QPoint placeOf(int objectId, qint64 frame) const;  ///< where a key is drawn
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {300, 80}; }

signals:
    void noticed(const QString& message);  ///< what could not be done, or was left out

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    using Key = std::pair<int, qint64>;  ///< object id, frame

    struct Lane {
        InstanceId id;
        QString title;
        document::FrameSet frames;
    };

    void readStore();
    void drawLanes(QPainter& painter);
    void drawCounts(QPainter& painter);
    void drawRuler(QPainter& painter);
    void drawKey(QPainter& painter, QPointF middle, bool isSelected) const;
    double xOf(double frame) const;
    qint64 frameAt(double x) const;
    int laneAt(double y) const;  ///< -1 outside the lanes
    QRectF laneRect(int lane) const;
    QRectF curveRect() const;
    int lanesBottom() const;
    std::vector<int> targetLanes() const;
    bool keyAt(QPoint position, Key& key) const;
    /// Puts changed states into the store as one step.
    void apply(const std::map<int, InstanceState>& states, const QString& text);

    EditorState& m_state;
    QUndoStack& m_undoStack;
    const document::FilterCatalog& m_catalog;
    std::vector<Lane> m_lanes;
    std::map<qint64, int> m_counts;
    std::set<Key> m_selected;

    enum class Drag { None, Scrub, Keys, Rubber } m_drag = Drag::None;
    QPoint m_pressed, m_pointer;
    bool m_hasMoved = false;
    qint64 m_moveBy = 0;
};

}  // namespace editor
