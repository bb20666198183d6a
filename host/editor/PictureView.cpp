#include "host/editor/PictureView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "host/document/PictureImage.h"
#include "host/editor/Theme.h"

namespace editor {

namespace {

constexpr double kSmallestZoom = 1.0 / 64, kLargestZoom = 64;
constexpr double kWipeReach = 6;  // how near the pointer must be to take hold of the line

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
QPointF positionOf(const QMouseEvent* event) {
    return event->localPos();
}
#else
QPointF positionOf(const QMouseEvent* event) {
    return event->position();
}
#endif

/// Shows where a picture lets things behind it through.
void drawChequers(QPainter& painter, const QRectF& area) {
    QPixmap tile(16, 16);
    tile.fill(QColor(0xa0, 0xa0, 0xa0));
    QPainter squares(&tile);
    squares.fillRect(0, 0, 8, 8, QColor(0x80, 0x80, 0x80));
    squares.fillRect(8, 8, 8, 8, QColor(0x80, 0x80, 0x80));
    squares.end();
    painter.fillRect(area, QBrush(tile));
}

}  // namespace

PictureView::PictureView(EditorState& state, QWidget* parent) : QWidget(parent), m_state(state) {
    setObjectName(QStringLiteral("pictureView"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Picture"));
    const auto refresh = [this] { update(); };
    connect(&state, &EditorState::previewChanged, this, refresh);
    connect(&state, &EditorState::previewChanged, this, &PictureView::describe);
    connect(&state, &EditorState::viewChanged, this, refresh);
    connect(&state, &EditorState::comparisonChanged, this, refresh);
}

void PictureView::setShowsBefore(bool on) {
    if (on == m_showsBefore) return;
    m_showsBefore = on;
    update();
}

void PictureView::describe() {
    const Preview& preview = *m_state.preview();
    setAccessibleDescription(preview.after ? tr("Frame %1, %2 × %3 pixels")
                                                 .arg(preview.frame)
                                                 .arg(preview.width)
                                                 .arg(preview.height)
                                           : tr("Nothing is open"));
}

// --- Where things are ---

QRectF PictureView::paneOf(int index) const {
    const QRectF all = rect();
    if (!isSideBySide()) return all;
    const double gap = 2;
    const double half = (all.width() - gap) / 2;
    return QRectF(index == 0 ? 0 : half + gap, 0, half, all.height());
}

QRectF PictureView::paneAt(QPointF position) const {
    return isSideBySide() && position.x() >= paneOf(1).left() ? paneOf(1) : paneOf(0);
}

double PictureView::effectiveZoom() const {
    if (m_state.zoom() > 0) return m_state.zoom();
    const Preview& preview = *m_state.preview();
    if (preview.width < 1 || preview.height < 1) return 1;
    const QRectF pane = paneOf(0);
    const double margin = 16;
    const double fitting = std::min((pane.width() - margin) / preview.width,
                                    (pane.height() - margin) / preview.height) *
                           devicePixelRatioF();
    // A small picture is not blown up beyond what still looks like a picture.
    const double largest = 8 * devicePixelRatioF();
    return std::clamp(fitting, kSmallestZoom, largest);
}

QRectF PictureView::targetIn(const QRectF& pane) const {
    const Preview& preview = *m_state.preview();
    const double scale = effectiveZoom() / devicePixelRatioF();
    const QSizeF size(preview.width * scale, preview.height * scale);
    const QPointF centre = m_state.zoom() > 0 ? m_state.centre() : QPointF(0.5, 0.5);
    QPointF corner(pane.center().x() - centre.x() * size.width(),
                   pane.center().y() - centre.y() * size.height());
    // On whole device pixels: at 100 % every pixel of the picture is one of the screen.
    const double ratio = devicePixelRatioF();
    corner =
        QPointF(std::round(corner.x() * ratio) / ratio, std::round(corner.y() * ratio) / ratio);
    return QRectF(corner, size);
}

QPointF PictureView::pictureAt(QPointF position) const {
    const QRectF target = targetIn(paneAt(position));
    if (target.isEmpty()) return {-1, -1};
    return {(position.x() - target.left()) / target.width(),
            (position.y() - target.top()) / target.height()};
}

double PictureView::wipeX() const {
    const QRectF target = targetIn(paneOf(0));
    return std::clamp(target.left() + m_wipe * target.width(), 0.0, width() - 1.0);
}

bool PictureView::isOnWipe(QPointF position) const {
    return m_state.comparison() == Comparison::Wipe && m_state.preview()->after &&
           std::abs(position.x() - wipeX()) <= kWipeReach;
}

// --- Painting ---

void PictureView::drawPicture(QPainter& painter, const Picture& picture, const Picture& fitted,
                              const QRectF& pane, Scaled& scaled) {
    if (!picture) return;
    const QRectF target = targetIn(pane);
    const QSize size = (target.size() * devicePixelRatioF()).toSize();
    m_state.setDrawnSize(size);
    const auto isOfSize = [size](const Picture& one) {
        return one && one->roiWidth == size.width() && one->roiHeight == size.height();
    };
    const bool isReduced = size.width() < picture->roiWidth && size.height() > 0;
    if (isReduced) {
        // Every pixel of the picture counts; the painter would only look at some of them.
        if (isOfSize(fitted))
            scaled = {picture, fitted};
        else if (scaled.of != picture || !isOfSize(scaled.picture))
            scaled = {picture, scaledPicture(*picture, size.width(), size.height())};
    }
    const QImage image = document::imageOf(isReduced ? scaled.picture : picture);
    if (image.isNull()) return;
    painter.save();
    painter.setClipRect(pane, Qt::IntersectClip);
    if (image.hasAlphaChannel()) drawChequers(painter, target);
    // Enlarged, pixels are squares; a reduced picture stands in for a larger one and is smooth.
    painter.setRenderHint(QPainter::SmoothPixmapTransform,
                          !isReduced && m_state.preview()->reduction > 1);
    painter.drawImage(
        isReduced ? QRectF(target.topLeft(), QSizeF(size) / devicePixelRatioF()) : target, image);
    painter.restore();
}

void PictureView::drawLabel(QPainter& painter, const QRectF& pane, Qt::Alignment place,
                            const QString& text) {
    if (text.isEmpty()) return;
    const double margin = 8, padding = 6;
    const QSizeF size = fontMetrics().size(Qt::TextSingleLine, text) + QSizeF(2 * padding, padding);
    QRectF box(pane.topLeft() + QPointF(margin, margin), size);
    if (place & Qt::AlignRight) box.moveRight(pane.right() - margin);
    if (place & Qt::AlignBottom) box.moveBottom(pane.bottom() - margin);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 160));
    painter.drawRoundedRect(box, 3, 3);
    painter.setPen(Qt::white);
    painter.drawText(box, Qt::AlignCenter, text);
    painter.restore();
}

void PictureView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), pictureSurroundings());
    const Preview& preview = *m_state.preview();
    if (!preview.after) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect().adjusted(24, 24, -24, -24), Qt::AlignCenter | Qt::TextWordWrap,
                         preview.problem);
        return;
    }
    const Comparison comparison = m_state.comparison();
    const QRectF pane = paneOf(0);
    const Picture fittedAfter = preview.display == preview.after ? preview.fittedDisplay : nullptr;
    const auto topRight = Qt::AlignTop | Qt::AlignRight;
    if (isSideBySide()) {
        drawPicture(painter, preview.before, preview.fittedBefore, pane, m_scaledBefore);
        drawPicture(painter, preview.after, fittedAfter, paneOf(1), m_scaledAfter);
        drawLabel(painter, pane, Qt::AlignTop, tr("Before"));
        drawLabel(painter, paneOf(1), Qt::AlignTop, tr("After"));
    } else if (m_showsBefore) {
        drawPicture(painter, preview.before, preview.fittedBefore, pane, m_scaledBefore);
        drawLabel(painter, pane, Qt::AlignTop, tr("Before"));
    } else if (comparison == Comparison::Wipe) {
        const double x = wipeX();
        drawPicture(painter, preview.after, fittedAfter, pane, m_scaledAfter);
        painter.save();
        painter.setClipRect(QRectF(0, 0, x, height()));
        painter.fillRect(rect(), pictureSurroundings());
        drawPicture(painter, preview.before, preview.fittedBefore, pane, m_scaledBefore);
        painter.restore();
        painter.fillRect(QRectF(x - 1.5, 0, 3, height()), QColor(0, 0, 0, 90));
        painter.fillRect(QRectF(x - 0.5, 0, 1, height()), Qt::white);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(0, 0, 0, 120), 1));
        painter.setBrush(Qt::white);
        painter.drawEllipse(QPointF(x, height() / 2.0), 6, 6);
        drawLabel(painter, pane, Qt::AlignTop, tr("Before"));
        drawLabel(painter, pane, topRight, tr("After"));
    } else {
        drawPicture(painter, preview.display, preview.fittedDisplay, pane, m_scaledAfter);
        if (comparison == Comparison::Difference)
            drawLabel(painter, pane, Qt::AlignTop, tr("Difference × 4"));
        if (comparison == Comparison::Objects && preview.display == preview.after)
            drawLabel(painter, pane, Qt::AlignTop,
                      tr("No objects to colour: the picture is not one of areas"));
    }
    if (m_isProbeOfKeys) drawProbe(painter);
    if (m_isReachedByKeys) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
    if (preview.reduction > 1)
        drawLabel(painter, rect(), Qt::AlignBottom | Qt::AlignRight,
                  tr("1/%1 size while dragging").arg(preview.reduction));
}

/// The pixel that the keys have brought the probe to: no pointer is there to show it.
void PictureView::drawProbe(QPainter& painter) {
    const double scale = effectiveZoom() / devicePixelRatioF();
    const double side = std::max(scale, 5.0);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    for (const int pane : {0, 1}) {
        if (pane == 1 && !isSideBySide()) break;
        const QPointF middle = targetIn(paneOf(pane)).topLeft() +
                               (QPointF(m_state.probe()) + QPointF(0.5, 0.5)) * scale;
        QRectF box(0, 0, side, side);
        box.moveCenter(middle);
        painter.setPen(Qt::black);
        painter.drawRect(box.adjusted(-2, -2, 1, 1));
        painter.setPen(Qt::white);
        painter.drawRect(box.adjusted(-1, -1, 0, 0));
    }
}

// --- Gestures ---

void PictureView::keyPressEvent(QKeyEvent* event) {
    const QPoint way = event->key() == Qt::Key_Left    ? QPoint(-1, 0)
                       : event->key() == Qt::Key_Right ? QPoint(1, 0)
                       : event->key() == Qt::Key_Up    ? QPoint(0, -1)
                       : event->key() == Qt::Key_Down  ? QPoint(0, 1)
                                                       : QPoint();
    const Preview& preview = *m_state.preview();
    if (way.isNull() || preview.width < 1 || preview.height < 1) {
        QWidget::keyPressEvent(event);
    } else if (event->modifiers() & Qt::ShiftModifier) {
        const bool isInside = QRect(0, 0, preview.width, preview.height).contains(m_state.probe());
        const QPoint from =
            isInside ? m_state.probe() : pixelAt(pictureAt(paneOf(0).center())) - way;
        moveProbe({std::clamp(from.x() + way.x(), 0, preview.width - 1),
                   std::clamp(from.y() + way.y(), 0, preview.height - 1)});
    } else if (event->modifiers() & Qt::ControlModifier) {
        const double step = 0.02;
        if (m_state.comparison() == Comparison::Wipe)
            m_wipe = std::clamp(m_wipe + step * way.x(), 0.0, 1.0);
    } else if (m_state.zoom() > 0) {
        const QRectF target = targetIn(paneOf(0));
        const double share = 0.1;  // of what is seen
        m_state.setCentre(m_state.centre() +
                          QPointF(way.x() * share * paneOf(0).width() / target.width(),
                                  way.y() * share * paneOf(0).height() / target.height()));
    }
    update();
}

/// By keys. What the pointer points at is seen; this is brought into view.
void PictureView::moveProbe(QPoint pixel) {
    const Preview& preview = *m_state.preview();
    m_isProbeOfKeys = true;
    m_state.setProbe(pixel);
    const QPointF place((pixel.x() + 0.5) / preview.width, (pixel.y() + 0.5) / preview.height);
    const QRectF target = targetIn(paneOf(0));
    const QPointF seen =
        target.topLeft() + QPointF(place.x() * target.width(), place.y() * target.height());
    if (m_state.zoom() > 0 && !paneOf(0).contains(seen)) m_state.setCentre(place);
}

QPoint PictureView::pixelAt(QPointF point) const {
    const Preview& preview = *m_state.preview();
    return QPoint(static_cast<int>(std::floor(point.x() * preview.width)),
                  static_cast<int>(std::floor(point.y() * preview.height)));
}

void PictureView::focusInEvent(QFocusEvent* event) {
    m_isReachedByKeys =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    update();
}

void PictureView::focusOutEvent(QFocusEvent*) {
    m_isReachedByKeys = false;
    update();
}

void PictureView::zoomTo(double zoom, QPointF fixed) {
    zoom = std::clamp(zoom, kSmallestZoom, kLargestZoom);
    const QPointF point = pictureAt(fixed);
    const QPointF middle = paneAt(fixed).center();
    const Preview& preview = *m_state.preview();
    if (preview.width < 1 || preview.height < 1) return;
    const double scale = zoom / devicePixelRatioF();
    // The point under the pointer stays there.
    m_state.setZoom(zoom);
    m_state.setCentre(point + QPointF((middle.x() - fixed.x()) / (preview.width * scale),
                                      (middle.y() - fixed.y()) / (preview.height * scale)));
}

void PictureView::zoomBy(double factor) {
    zoomTo(effectiveZoom() * factor, paneOf(0).center());
}

void PictureView::wheelEvent(QWheelEvent* event) {
    const double notch = 120;
    zoomTo(effectiveZoom() * std::pow(1.25, event->angleDelta().y() / notch), event->position());
    event->accept();
}

void PictureView::mousePressEvent(QMouseEvent* event) {
    m_dragStart = positionOf(event);
    m_dragCentre = m_state.zoom() > 0 ? m_state.centre() : QPointF(0.5, 0.5);
    if (event->button() == Qt::LeftButton && isOnWipe(m_dragStart))
        m_drag = Drag::Wipe;
    else if (event->button() == Qt::LeftButton || event->button() == Qt::MiddleButton)
        m_drag = Drag::Pan;
    if (m_drag == Drag::Pan && m_state.zoom() > 0) setCursor(Qt::ClosedHandCursor);
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    const QPointF position = positionOf(event);
    const QRectF target = targetIn(paneOf(0));
    if (m_drag == Drag::Wipe && target.width() > 0) {
        m_wipe = std::clamp((position.x() - target.left()) / target.width(), 0.0, 1.0);
        update();
    } else if (m_drag == Drag::Pan && m_state.zoom() > 0 && !target.isEmpty()) {
        const QPointF moved = position - m_dragStart;
        m_state.setCentre(m_dragCentre -
                          QPointF(moved.x() / target.width(), moved.y() / target.height()));
    } else if (m_drag == Drag::None) {
        setCursor(isOnWipe(position) ? Qt::SplitHCursor : Qt::ArrowCursor);
    }
    if (std::exchange(m_isProbeOfKeys, false)) update();
    m_state.setProbe(pixelAt(pictureAt(position)));
}

void PictureView::mouseReleaseEvent(QMouseEvent*) {
    m_drag = Drag::None;
    setCursor(Qt::ArrowCursor);
}

void PictureView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || isOnWipe(positionOf(event))) return;
    if (m_state.zoom() > 0)
        m_state.setZoom(0);
    else
        zoomTo(1, positionOf(event));
}

void PictureView::leaveEvent(QEvent*) {
    if (m_isProbeOfKeys) return;
    m_state.setProbe({-1, -1});
}

}  // namespace editor
