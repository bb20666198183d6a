#pragma once

#include <QImage>
#include <QWidget>

#include "host/editor/EditorState.h"

namespace editor {

/// Shows the picture: fitted or at any zoom, beside or over the one before it.
///
/// Mouse: the wheel zooms to the pointer, dragging moves the picture, the wipe line follows a drag
/// of its own, a double click switches between fitted and 100 %. The pointer is the probe.
///
/// Keyboard: arrows move the picture, with Shift the probe by a pixel, with Ctrl the wipe line.
class PictureView : public QWidget {
    Q_OBJECT

public:
    explicit PictureView(EditorState& state, QWidget* parent = nullptr);

    /// Shows the picture before the filters as long as it is set.
    void setShowsBefore(bool on);
    bool showsBefore() const { return m_showsBefore; }

    void zoomBy(double factor);    ///< about the middle
    double effectiveZoom() const;  ///< device pixels per pixel, also when fitted

    QSize minimumSizeHint() const override { return {240, 180}; }
    QSize sizeHint() const override { return {960, 640}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    /// A picture brought to size once and then only copied.
    struct Scaled {
        Picture of;
        Picture picture;
    };

    bool isSideBySide() const { return m_state.comparison() == Comparison::SideBySide; }
    QRectF paneOf(int index) const;             ///< in widget coordinates
    QRectF targetIn(const QRectF& pane) const;  ///< where the whole picture lies
    QRectF paneAt(QPointF position) const;
    QPointF pictureAt(QPointF position) const;  ///< 0 ... 1 on both axes
    QPoint pixelAt(QPointF point) const;        ///< of a point as pictureAt() says it
    double wipeX() const;
    bool isOnWipe(QPointF position) const;
    void zoomTo(double zoom, QPointF fixed);
    /// `fitted` is the picture at the size at which it was last drawn, or null.
    void drawPicture(QPainter& painter, const Picture& picture, const Picture& fitted,
                     const QRectF& pane, Scaled& scaled);
    void drawLabel(QPainter& painter, const QRectF& pane, Qt::Alignment place, const QString& text);
    void moveProbe(QPoint pixel);
    void drawProbe(QPainter& painter);
    void describe();

    EditorState& m_state;
    bool m_showsBefore = false;
    bool m_isReachedByKeys = false;  ///< then the focus is shown
    bool m_isProbeOfKeys = false;
    double m_wipe = 0.5;  ///< share of the picture's width that shows what was before
    enum class Drag { None, Pan, Wipe } m_drag = Drag::None;
    QPointF m_dragStart, m_dragCentre;
    Scaled m_scaledBefore, m_scaledAfter;
};

}  // namespace editor
