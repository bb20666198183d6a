#include "host/editor/TimelineView.h"

#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "host/editor/Texts.h"

namespace editor {

namespace {

using Scale = TimelineScale;

/// The least distance of labels, in frames: 1, 2 or 5 times a power of ten.
qint64 labelStep(double framesPerLabel) {
    qint64 step = 1;
    while (step < framesPerLabel) {
        if (step * 2 >= framesPerLabel) return step * 2;
        if (step * 5 >= framesPerLabel) return step * 5;
        step *= 10;
    }
    return step;
}

}  // namespace

TimelineView::TimelineView(EditorState& state, TimelineKeys& keys, QWidget* parent)
    : QWidget(parent), m_state(state), m_keys(keys) {
    setObjectName(QStringLiteral("timelineView"));
    setAccessibleName(tr("Timeline"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    connect(&keys, &TimelineKeys::changed, this, &TimelineView::fit);
    connect(&state, &EditorState::framesChanged, this, &TimelineView::fit);
    connect(&state, &EditorState::currentFrameChanged, this, &TimelineView::showLane);
    fit();
}

void TimelineView::fit() {
    m_lane = std::clamp(m_lane, 0, std::max(0, static_cast<int>(lanes().size()) - 1));
    showLane();
    setMinimumHeight(Scale::kRuler + std::max(1, static_cast<int>(lanes().size())) * Scale::kLane +
                     (m_counts.empty() ? 0 : Scale::kCurve) + 4);
    emit heightChanged();
    updateGeometry();
    update();
}

/// For those who do not see it as well.
void TimelineView::showLane() {
    QString description;
    if (!lanes().empty()) {
        const TimelineKeys::Lane& lane = lanes()[static_cast<std::size_t>(m_lane)];
        const qint64 frame = m_state.currentFrame();
        description = m_keys.selected().count({lane.id.objectId, frame})
                          ? tr("%1, frame %2: selected key")
                      : lane.frames.count(frame) ? tr("%1, frame %2: key")
                                                 : tr("%1, frame %2: no key");
        description = description.arg(lane.title).arg(frame);
    }
    setAccessibleDescription(description);
    update();
}

TimelineScale TimelineView::scale() const {
    return {m_state.frames(), size(), static_cast<int>(lanes().size())};
}

void TimelineView::clearCounts() {
    m_counts.clear();
    fit();
}

void TimelineView::setCount(qint64 frame, int count) {
    const bool isFirst = m_counts.empty();
    m_counts[frame] = count;
    if (isFirst) fit();
    update();
}

QSize TimelineView::sizeHint() const {
    return {800, std::max(minimumHeight(), Scale::kRuler + 2 * Scale::kLane)};
}

QPoint TimelineView::placeOf(int objectId, qint64 frame) const {
    for (std::size_t lane = 0; lane < lanes().size(); ++lane)
        if (lanes()[lane].id.objectId == objectId)
            return QPointF(scale().xOfKey(frame),
                           scale().laneRect(static_cast<int>(lane)).center().y())
                .toPoint();
    return {};
}

bool TimelineView::keyAt(QPoint position, Key& key) const {
    const int lane = scale().laneAt(position.y());
    if (lane < 0) return false;
    const TimelineKeys::Lane& shown = lanes()[static_cast<std::size_t>(lane)];
    double nearest = Scale::kKeyRadius + 3;
    bool found = false;
    for (const qint64 frame : shown.frames) {
        const double distance = std::abs(scale().xOfKey(frame) - position.x());
        if (distance > nearest) continue;
        nearest = distance;
        key = {shown.id.objectId, frame};
        found = true;
    }
    return found;
}

// --- Painting ---

void TimelineView::drawRuler(QPainter& painter) {
    painter.fillRect(QRectF(0, 0, width(), Scale::kRuler), palette().color(QPalette::Button));
    const auto& frames = m_state.frames();
    if (frames.empty()) return;
    const qint64 first = frames.front(), last = frames.back();
    const double pointsPerFrame =
        last > first
            ? (scale().xOf(static_cast<double>(last)) - scale().xOf(static_cast<double>(first))) /
                  static_cast<double>(last - first)
            : width();
    const int labelWidth = fontMetrics().horizontalAdvance(QString::number(last)) + 20;
    const qint64 step = labelStep(labelWidth / pointsPerFrame);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    for (qint64 frame = (first + step - 1) / step * step; frame <= last; frame += step) {
        const double x = scale().xOf(static_cast<double>(frame));
        painter.drawLine(QLineF(x, Scale::kRuler - 5, x, Scale::kRuler));
        painter.drawText(QRectF(x - labelWidth / 2.0, 1, labelWidth, Scale::kRuler - 6),
                         Qt::AlignCenter, QString::number(frame));
    }
}

void TimelineView::drawKey(QPainter& painter, QPointF middle, bool isSelected) const {
    QPolygonF diamond;
    diamond << middle + QPointF(0, -Scale::kKeyRadius) << middle + QPointF(Scale::kKeyRadius, 0)
            << middle + QPointF(0, Scale::kKeyRadius) << middle + QPointF(-Scale::kKeyRadius, 0);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 1));
    painter.setBrush(isSelected ? palette().color(QPalette::Highlight)
                                : palette().color(QPalette::Button));
    painter.drawPolygon(diamond);
}

void TimelineView::drawLanes(QPainter& painter) {
    for (std::size_t index = 0; index < lanes().size(); ++index) {
        const TimelineKeys::Lane& lane = lanes()[index];
        const QRectF area = scale().laneRect(static_cast<int>(index));
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(area, index % 2 ? palette().color(QPalette::AlternateBase)
                                         : palette().color(QPalette::Base));
        if (hasFocus() && static_cast<int>(index) == m_lane)
            painter.fillRect(QRectF(area.left(), area.top(), 4, area.height()),
                             palette().color(QPalette::Highlight));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(area.adjusted(8, 0, -(width() - Scale::kHeader), 0), Qt::AlignVCenter,
                         fontMetrics().elidedText(lane.title, Qt::ElideRight, Scale::kHeader - 12));
        painter.setRenderHint(QPainter::Antialiasing);
        if (lane.frames.size() > 1) {
            painter.setPen(QPen(palette().color(QPalette::PlaceholderText), 1));
            painter.drawLine(QPointF(scale().xOfKey(*lane.frames.begin()), area.center().y()),
                             QPointF(scale().xOfKey(*lane.frames.rbegin()), area.center().y()));
        }
        for (const qint64 frame : lane.frames) {
            const bool isSelected = m_keys.selected().count({lane.id.objectId, frame}) > 0;
            const qint64 shown = isSelected && m_drag == Drag::Keys ? frame + m_moveBy : frame;
            drawKey(painter, {scale().xOfKey(shown), area.center().y()}, isSelected);
        }
    }
    if (lanes().empty()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        const QRectF area(8, Scale::kRuler, width() - 16, Scale::kLane);
        const QString hint =
            tr("Press ◇ on an applied filter to animate it; each edit then makes a key");
        painter.drawText(
            area, Qt::AlignVCenter,
            fontMetrics().elidedText(hint, Qt::ElideRight, static_cast<int>(area.width())));
    }
}

void TimelineView::drawCounts(QPainter& painter) {
    if (m_counts.empty()) return;
    const QRectF area = scale().curveRect();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(area, palette().color(QPalette::Base));
    int most = 1;
    for (const auto& [frame, count] : m_counts) most = std::max(most, count);
    const double bottom = area.bottom() - 6, rise = area.height() - 14;
    QPainterPath curve;
    std::optional<qint64> previous;
    for (const auto& [frame, count] : m_counts) {
        const QPointF point(scale().xOf(static_cast<double>(frame)), bottom - rise * count / most);
        // A frame that was not counted leaves a gap.
        const auto& frames = m_state.frames();
        const auto next =
            previous ? std::upper_bound(frames.begin(), frames.end(), *previous) : frames.end();
        const bool follows = next != frames.end() && *next == frame;
        if (follows)
            curve.lineTo(point);
        else
            curve.moveTo(point);
        previous = frame;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1.6));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(curve);
    const auto here = m_counts.find(m_state.currentFrame());
    if (here != m_counts.end()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::Highlight));
        painter.drawEllipse(QPointF(scale().xOf(static_cast<double>(here->first)),
                                    bottom - rise * here->second / most),
                            3.5, 3.5);
    }
    painter.setPen(palette().color(QPalette::Text));
    const QRectF title = area.adjusted(8, 4, -(width() - Scale::kHeader), -4);
    painter.drawText(title, Qt::AlignTop, tr("Objects"));
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(title, Qt::AlignBottom,
                     here == m_counts.end()
                         ? tr("at most %1").arg(most)
                         : tr("%1 here, at most %2").arg(here->second).arg(most));
}

void TimelineView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    drawRuler(painter);
    drawLanes(painter);
    drawCounts(painter);
    if (!m_state.frames().empty()) {
        const double x = std::round(scale().xOf(static_cast<double>(m_state.currentFrame())));
        const QColor accent = palette().color(QPalette::Highlight);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(QRectF(x - 0.5, 0, 1, height()), accent);
        painter.setPen(Qt::NoPen);
        painter.setBrush(accent);
        painter.drawPolygon(QPolygonF({{x - 5, 0}, {x + 5, 0}, {x + 5, 6}, {x, 11}, {x - 5, 6}}));
    }
    if (m_drag == Drag::Rubber && m_hasMoved) {
        QColor fill = palette().color(QPalette::Highlight);
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(fill);
        fill.setAlpha(50);
        painter.setBrush(fill);
        painter.drawRect(QRect(m_pressed, m_pointer).normalized());
    }
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(palette().color(QPalette::Highlight));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

// --- Gestures ---

void TimelineView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || m_state.frames().empty()) return;
    m_pressed = m_pointer = event->pos();
    m_hasMoved = false;
    m_moveBy = 0;
    if (scale().laneAt(m_pressed.y()) >= 0) m_lane = scale().laneAt(m_pressed.y());
    const bool adds = event->modifiers() & Qt::ControlModifier;
    std::set<Key> selected = m_keys.selected();
    Key key;
    if (keyAt(m_pressed, key)) {
        m_drag = Drag::Keys;
        if (!selected.count(key)) {
            if (!adds) selected.clear();
            selected.insert(key);
        } else if (adds) {
            selected.erase(key);
        }
        m_keys.setSelected(selected);
    } else if (scale().laneAt(m_pressed.y()) >= 0) {
        m_drag = Drag::Rubber;
        if (!adds) m_keys.setSelected({});
    } else {
        m_drag = Drag::Scrub;
        m_state.setCurrentFrame(scale().frameAt(m_pressed.x()));
    }
    update();
}

void TimelineView::mouseMoveEvent(QMouseEvent* event) {
    m_pointer = event->pos();
    if ((m_pointer - m_pressed).manhattanLength() >= QApplication::startDragDistance() / 2)
        m_hasMoved = true;
    if (m_drag == Drag::Scrub) m_state.setCurrentFrame(scale().frameAt(m_pointer.x()));
    if (m_drag == Drag::Keys)
        m_moveBy =
            m_keys.withinFrames(scale().frameAt(m_pointer.x()) - scale().frameAt(m_pressed.x()));
    if (m_drag != Drag::None) update();
}

void TimelineView::mouseReleaseEvent(QMouseEvent* event) {
    m_pointer = event->pos();
    const Drag drag = std::exchange(m_drag, Drag::None);
    const qint64 moveBy = std::exchange(m_moveBy, 0);
    if (drag == Drag::Rubber && !m_hasMoved) {
        m_state.setCurrentFrame(scale().frameAt(m_pressed.x()));
    } else if (drag == Drag::Rubber) {
        const QRect area = QRect(m_pressed, m_pointer).normalized();
        std::set<Key> selected = m_keys.selected();
        for (const TimelineKeys::Lane& lane : lanes())
            for (const qint64 frame : lane.frames)
                if (area.contains(placeOf(lane.id.objectId, frame)))
                    selected.insert({lane.id.objectId, frame});
        m_keys.setSelected(selected);
    } else if (drag == Drag::Keys && m_hasMoved) {
        m_keys.moveSelected(moveBy);
    } else if (drag == Drag::Keys && m_keys.selected().size() == 1) {
        m_state.setCurrentFrame(m_keys.selected().begin()->second);
    }
    update();
}

void TimelineView::mouseDoubleClickEvent(QMouseEvent* event) {
    const int lane = scale().laneAt(event->pos().y());
    Key key;
    if (event->button() == Qt::LeftButton && lane >= 0 && !keyAt(event->pos(), key))
        m_keys.addAt(lane, scale().frameAt(event->pos().x()));
}

void TimelineView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        m_keys.deleteSelected();
    } else if (event->matches(QKeySequence::Copy)) {
        m_keys.copySelected();
    } else if (event->matches(QKeySequence::Paste)) {
        m_keys.paste();
    } else if (event->matches(QKeySequence::SelectAll)) {
        std::set<Key> all;
        for (const TimelineKeys::Lane& lane : lanes())
            for (const qint64 frame : lane.frames) all.insert({lane.id.objectId, frame});
        m_keys.setSelected(all);
    } else if (event->key() == Qt::Key_Escape && !m_keys.selected().empty()) {
        m_keys.setSelected({});
    } else if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        const int direction = event->key() == Qt::Key_Right ? 1 : -1;
        if (event->modifiers() & Qt::ControlModifier)
            m_keys.goToKey(direction);
        else if (event->modifiers() & Qt::AltModifier)
            m_keys.moveSelected(direction);
        else
            m_state.stepFrames(direction);
    } else if ((event->key() == Qt::Key_Up || event->key() == Qt::Key_Down) && !lanes().empty()) {
        m_lane = std::clamp(m_lane + (event->key() == Qt::Key_Down ? 1 : -1), 0,
                            static_cast<int>(lanes().size()) - 1);
        showLane();
        emit laneChosen(scale().laneRect(m_lane).toRect());
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
               !lanes().empty()) {
        m_keys.toggleSelected(m_lane);
    } else if (event->key() == Qt::Key_Insert && !lanes().empty()) {
        m_keys.addAt(m_lane, m_state.currentFrame());
    } else if (event->key() == Qt::Key_Home && !m_state.frames().empty()) {
        m_state.setCurrentFrame(m_state.frames().front());
    } else if (event->key() == Qt::Key_End && !m_state.frames().empty()) {
        m_state.setCurrentFrame(m_state.frames().back());
    } else {
        QWidget::keyPressEvent(event);
    }
}

bool TimelineView::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    Key key;
    QString text;
    if (keyAt(help->pos(), key)) {
        text = m_keys.textOf(key)
                   .replace(QLatin1Char(','), QLatin1Char('\n'))
                   .replace(QLatin1Char(':'), QLatin1Char('\n'));
    } else if (!m_counts.empty() && scale().curveRect().contains(help->pos())) {
        const auto count = m_counts.find(scale().frameAt(help->pos().x()));
        if (count != m_counts.end())
            text = tr("Frame %1: %2").arg(count->first).arg(objectCountText(count->second));
    }
    QToolTip::showText(help->globalPos(), text, this);
    return true;
}

}  // namespace editor
