#include "host/editor/TimelineView.h"

#include <QApplication>
#include <QClipboard>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/FilterError.h"
#include "host/document/FilterSettings.h"
#include "host/editor/Texts.h"
#include "host/kernel/CmdSetChain.h"
#include "host/kernel/KernelNotifier.h"

namespace editor {

namespace {

constexpr int kHeader = 170;  // titles at the left
constexpr int kRuler = 22, kLane = 24, kCurve = 56, kMargin = 14;
constexpr double kKeyRadius = 5;

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

TimelineView::TimelineView(EditorState& state, QUndoStack& undoStack,
                           const document::FilterCatalog& catalog, QWidget* parent)
    : QWidget(parent), m_state(state), m_undoStack(undoStack), m_catalog(catalog) {
    setObjectName(QStringLiteral("timelineView"));
    setAccessibleName(tr("Timeline"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    KernelNotifier* const store = KernelNotifier::instance();
    connect(store, &KernelNotifier::objectChanged, this, &TimelineView::readStore);
    connect(store, &KernelNotifier::orderChanged, this, &TimelineView::readStore);
    connect(&state, &EditorState::framesChanged, this, &TimelineView::readStore);
    connect(&state, &EditorState::currentFrameChanged, this, [this] { update(); });
    readStore();
}

void TimelineView::readStore() {
    const KernelStore& store = KernelStore::instance();
    m_lanes.clear();
    std::set<Key> present;
    for (const InstanceId& id : store.instances()) {
        const auto state = store.state(id.objectId);
        if (!state->animated) continue;
        const document::FrameSet frames = document::keyFrames(*state);
        for (const qint64 frame : frames) present.insert({id.objectId, frame});
        m_lanes.push_back({id, store.nameOf(id.objectId), frames});
    }
    std::set<Key> stillThere;
    std::set_intersection(m_selected.begin(), m_selected.end(), present.begin(), present.end(),
                          std::inserter(stillThere, stillThere.end()));
    m_selected = stillThere;
    setMinimumHeight(kRuler + std::max(1, static_cast<int>(m_lanes.size())) * kLane +
                     (m_counts.empty() ? 0 : kCurve) + 4);
    updateGeometry();
    update();
}

void TimelineView::clearCounts() {
    m_counts.clear();
    readStore();
}

void TimelineView::setCount(qint64 frame, int count) {
    const bool isFirst = m_counts.empty();
    m_counts[frame] = count;
    if (isFirst) readStore();
    update();
}

QSize TimelineView::sizeHint() const {
    return {800, std::max(minimumHeight(), kRuler + 2 * kLane)};
}

// --- Where things are ---

double TimelineView::xOf(double frame) const {
    const auto& frames = m_state.frames();
    const double left = kHeader + kMargin, right = width() - kMargin;
    if (frames.size() < 2) return left;
    const auto first = static_cast<double>(frames.front());
    return left + (frame - first) / (static_cast<double>(frames.back()) - first) * (right - left);
}

qint64 TimelineView::frameAt(double x) const {
    const auto& frames = m_state.frames();
    if (frames.size() < 2) return m_state.currentFrame();
    const double span =
        xOf(static_cast<double>(frames.back())) - xOf(static_cast<double>(frames.front()));
    const double share = (x - xOf(static_cast<double>(frames.front()))) / span;
    const double frame = static_cast<double>(frames.front()) +
                         share * static_cast<double>(frames.back() - frames.front());
    return std::clamp<qint64>(std::llround(frame), frames.front(), frames.back());
}

QRectF TimelineView::laneRect(int lane) const {
    return QRectF(0, kRuler + lane * kLane, width(), kLane);
}

int TimelineView::lanesBottom() const {
    return kRuler + static_cast<int>(m_lanes.size()) * kLane;
}

int TimelineView::laneAt(double y) const {
    const int lane = static_cast<int>(std::floor((y - kRuler) / kLane));
    return y >= kRuler && lane < static_cast<int>(m_lanes.size()) ? lane : -1;
}

QRectF TimelineView::curveRect() const {
    const int top = std::max(lanesBottom(), height() - kCurve);
    return QRectF(0, top, width(), height() - top);
}

QPoint TimelineView::placeOf(int objectId, qint64 frame) const {
    for (std::size_t lane = 0; lane < m_lanes.size(); ++lane)
        if (m_lanes[lane].id.objectId == objectId)
            return QPointF(xOf(static_cast<double>(frame)),
                           laneRect(static_cast<int>(lane)).center().y())
                .toPoint();
    return {};
}

bool TimelineView::keyAt(QPoint position, Key& key) const {
    const int lane = laneAt(position.y());
    if (lane < 0) return false;
    const Lane& shown = m_lanes[static_cast<std::size_t>(lane)];
    double nearest = kKeyRadius + 3;
    bool found = false;
    for (const qint64 frame : shown.frames) {
        const double distance = std::abs(xOf(static_cast<double>(frame)) - position.x());
        if (distance > nearest) continue;
        nearest = distance;
        key = {shown.id.objectId, frame};
        found = true;
    }
    return found;
}

// --- Painting ---

void TimelineView::drawRuler(QPainter& painter) {
    painter.fillRect(QRectF(0, 0, width(), kRuler), palette().color(QPalette::Button));
    const auto& frames = m_state.frames();
    if (frames.empty()) return;
    const qint64 first = frames.front(), last = frames.back();
    const double pointsPerFrame =
        last > first ? (xOf(static_cast<double>(last)) - xOf(static_cast<double>(first))) /
                           static_cast<double>(last - first)
                     : width();
    const int labelWidth = fontMetrics().horizontalAdvance(QString::number(last)) + 20;
    const qint64 step = labelStep(labelWidth / pointsPerFrame);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    for (qint64 frame = (first + step - 1) / step * step; frame <= last; frame += step) {
        const double x = xOf(static_cast<double>(frame));
        painter.drawLine(QLineF(x, kRuler - 5, x, kRuler));
        painter.drawText(QRectF(x - labelWidth / 2.0, 1, labelWidth, kRuler - 6), Qt::AlignCenter,
                         QString::number(frame));
    }
}

void TimelineView::drawKey(QPainter& painter, QPointF middle, bool isSelected) const {
    QPolygonF diamond;
    diamond << middle + QPointF(0, -kKeyRadius) << middle + QPointF(kKeyRadius, 0)
            << middle + QPointF(0, kKeyRadius) << middle + QPointF(-kKeyRadius, 0);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 1));
    painter.setBrush(isSelected ? palette().color(QPalette::Highlight)
                                : palette().color(QPalette::Button));
    painter.drawPolygon(diamond);
}

void TimelineView::drawLanes(QPainter& painter) {
    for (std::size_t index = 0; index < m_lanes.size(); ++index) {
        const Lane& lane = m_lanes[index];
        const QRectF area = laneRect(static_cast<int>(index));
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(area, index % 2 ? palette().color(QPalette::AlternateBase)
                                         : palette().color(QPalette::Base));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(area.adjusted(8, 0, -(width() - kHeader), 0), Qt::AlignVCenter,
                         fontMetrics().elidedText(lane.title, Qt::ElideRight, kHeader - 12));
        painter.setRenderHint(QPainter::Antialiasing);
        if (lane.frames.size() > 1) {
            painter.setPen(QPen(palette().color(QPalette::PlaceholderText), 1));
            painter.drawLine(
                QPointF(xOf(static_cast<double>(*lane.frames.begin())), area.center().y()),
                QPointF(xOf(static_cast<double>(*lane.frames.rbegin())), area.center().y()));
        }
        for (const qint64 frame : lane.frames) {
            const bool isSelected = m_selected.count({lane.id.objectId, frame}) > 0;
            const qint64 shown = isSelected && m_drag == Drag::Keys ? frame + m_moveBy : frame;
            drawKey(painter, {xOf(static_cast<double>(shown)), area.center().y()}, isSelected);
        }
    }
    if (m_lanes.empty()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(
            QRectF(kHeader + kMargin, kRuler, width() - kHeader - 2 * kMargin, kLane),
            Qt::AlignVCenter,
            tr("Press ◇ on an applied filter to animate it; each edit then makes a key"));
    }
}

void TimelineView::drawCounts(QPainter& painter) {
    if (m_counts.empty()) return;
    const QRectF area = curveRect();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(area, palette().color(QPalette::Base));
    int most = 1;
    for (const auto& [frame, count] : m_counts) most = std::max(most, count);
    const double bottom = area.bottom() - 6, rise = area.height() - 14;
    QPainterPath curve;
    std::optional<qint64> previous;
    for (const auto& [frame, count] : m_counts) {
        const QPointF point(xOf(static_cast<double>(frame)), bottom - rise * count / most);
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
        painter.drawEllipse(
            QPointF(xOf(static_cast<double>(here->first)), bottom - rise * here->second / most),
            3.5, 3.5);
    }
    painter.setPen(palette().color(QPalette::Text));
    const QRectF title = area.adjusted(8, 4, -(width() - kHeader), -4);
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
        const double x = std::round(xOf(static_cast<double>(m_state.currentFrame())));
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
    const bool adds = event->modifiers() & Qt::ControlModifier;
    Key key;
    if (keyAt(m_pressed, key)) {
        m_drag = Drag::Keys;
        if (!m_selected.count(key)) {
            if (!adds) m_selected.clear();
            m_selected.insert(key);
        } else if (adds) {
            m_selected.erase(key);
        }
    } else if (laneAt(m_pressed.y()) >= 0) {
        m_drag = Drag::Rubber;
        if (!adds) m_selected.clear();
    } else {
        m_drag = Drag::Scrub;
        m_state.setCurrentFrame(frameAt(m_pressed.x()));
    }
    update();
}

void TimelineView::mouseMoveEvent(QMouseEvent* event) {
    m_pointer = event->pos();
    if ((m_pointer - m_pressed).manhattanLength() >= QApplication::startDragDistance() / 2)
        m_hasMoved = true;
    if (m_drag == Drag::Scrub) m_state.setCurrentFrame(frameAt(m_pointer.x()));
    if (m_drag == Drag::Keys && !m_selected.empty()) {
        qint64 earliest = m_selected.begin()->second;
        for (const Key& key : m_selected) earliest = std::min(earliest, key.second);
        m_moveBy = std::max(frameAt(m_pointer.x()) - frameAt(m_pressed.x()), -earliest);
    }
    if (m_drag != Drag::None) update();
}

void TimelineView::mouseReleaseEvent(QMouseEvent* event) {
    m_pointer = event->pos();
    const Drag drag = std::exchange(m_drag, Drag::None);
    if (drag == Drag::Rubber && !m_hasMoved) m_state.setCurrentFrame(frameAt(m_pressed.x()));
    if (drag == Drag::Rubber && m_hasMoved) {
        const QRect area = QRect(m_pressed, m_pointer).normalized();
        for (const Lane& lane : m_lanes)
            for (const qint64 frame : lane.frames)
                if (area.contains(placeOf(lane.id.objectId, frame)))
                    m_selected.insert({lane.id.objectId, frame});
    }
    if (drag == Drag::Keys && m_hasMoved && m_moveBy != 0) {
        std::map<int, InstanceState> states;
        std::set<Key> moved;
        for (const Lane& lane : m_lanes) {
            document::FrameSet frames;
            for (const Key& key : m_selected)
                if (key.first == lane.id.objectId) frames.insert(key.second);
            if (frames.empty()) continue;
            const auto state = KernelStore::instance().state(lane.id.objectId);
            states[lane.id.objectId] = document::withKeysMoved(*state, frames, m_moveBy);
            for (const qint64 frame : frames) moved.insert({lane.id.objectId, frame + m_moveBy});
        }
        const auto count = static_cast<int>(m_selected.size());
        m_selected.clear();
        apply(states, count == 1 ? tr("Move a key by %1 frames").arg(m_moveBy)
                                 : tr("Move %1 keys by %2 frames").arg(count).arg(m_moveBy));
        m_selected = moved;
        readStore();
    } else if (drag == Drag::Keys && !m_hasMoved && m_selected.size() == 1) {
        m_state.setCurrentFrame(m_selected.begin()->second);
    }
    m_moveBy = 0;
    update();
}

void TimelineView::mouseDoubleClickEvent(QMouseEvent* event) {
    const int lane = laneAt(event->pos().y());
    Key key;
    if (event->button() != Qt::LeftButton || lane < 0 || keyAt(event->pos(), key)) return;
    const Lane& shown = m_lanes[static_cast<std::size_t>(lane)];
    const qint64 frame = frameAt(event->pos().x());
    const auto state = KernelStore::instance().state(shown.id.objectId);
    apply({{shown.id.objectId,
            document::withKeyAt(*state, m_catalog.descriptor(shown.id.typeId), frame)}},
          tr("%1: add a key (frame %2)").arg(shown.title).arg(frame));
}

void TimelineView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        deleteSelected();
    } else if (event->matches(QKeySequence::Copy)) {
        copySelected();
    } else if (event->matches(QKeySequence::Paste)) {
        paste();
    } else if (event->matches(QKeySequence::SelectAll)) {
        for (const Lane& lane : m_lanes)
            for (const qint64 frame : lane.frames) m_selected.insert({lane.id.objectId, frame});
        update();
    } else if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        const int direction = event->key() == Qt::Key_Right ? 1 : -1;
        if (event->modifiers() & Qt::ControlModifier)
            goToKey(direction);
        else
            m_state.stepFrames(direction);
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
        for (const Lane& lane : m_lanes)
            if (lane.id.objectId == key.first)
                text =
                    document::textOfKeys(lane.id.typeId, *KernelStore::instance().state(key.first),
                                         {key.second}, m_catalog)
                        .replace(QLatin1Char(','), QLatin1Char('\n'))
                        .replace(QLatin1Char(':'), QLatin1Char('\n'));
    } else if (!m_counts.empty() && curveRect().contains(help->pos())) {
        const auto count = m_counts.find(frameAt(help->pos().x()));
        if (count != m_counts.end())
            text = tr("Frame %1: %2").arg(count->first).arg(objectCountText(count->second));
    }
    QToolTip::showText(help->globalPos(), text, this);
    return true;
}

// --- Edits ---

void TimelineView::apply(const std::map<int, InstanceState>& states, const QString& text) {
    std::vector<ChainItem> chain = currentChain();
    for (ChainItem& item : chain) {
        const auto changed = states.find(item.id.objectId);
        if (changed != states.end()) item.state = changed->second;
    }
    m_undoStack.push(new CmdSetChain(text, chain));
}

std::vector<int> TimelineView::targetLanes() const {
    std::vector<int> lanes;
    for (std::size_t lane = 0; lane < m_lanes.size(); ++lane) {
        const bool holdsSelected =
            std::any_of(m_selected.begin(), m_selected.end(),
                        [&](const Key& key) { return key.first == m_lanes[lane].id.objectId; });
        if (m_selected.empty() || holdsSelected) lanes.push_back(static_cast<int>(lane));
    }
    return lanes;
}

void TimelineView::addKeyHere() {
    std::map<int, InstanceState> states;
    for (const int index : targetLanes()) {
        const Lane& lane = m_lanes[static_cast<std::size_t>(index)];
        states[lane.id.objectId] =
            document::withKeyAt(*KernelStore::instance().state(lane.id.objectId),
                                m_catalog.descriptor(lane.id.typeId), m_state.currentFrame());
    }
    if (states.empty()) {
        emit noticed(tr("No filter is animated: press ◇ on one first"));
        return;
    }
    apply(states, tr("Add a key (frame %1)").arg(m_state.currentFrame()));
}

void TimelineView::deleteSelected() {
    std::map<int, InstanceState> states;
    const KernelStore& store = KernelStore::instance();
    for (const Lane& lane : m_lanes) {
        document::FrameSet frames;
        for (const Key& key : m_selected)
            if (key.first == lane.id.objectId) frames.insert(key.second);
        if (!frames.empty())
            states[lane.id.objectId] =
                document::withoutKeys(*store.state(lane.id.objectId), frames);
    }
    if (states.empty()) {
        emit noticed(tr("No key is selected: click one, or draw a rectangle around several"));
        return;
    }
    const auto count = static_cast<int>(m_selected.size());
    m_selected.clear();
    apply(states, count == 1 ? tr("Delete a key") : tr("Delete %1 keys").arg(count));
}

void TimelineView::copySelected() {
    QStringList lines;
    for (const Lane& lane : m_lanes) {
        document::FrameSet frames;
        for (const Key& key : m_selected)
            if (key.first == lane.id.objectId) frames.insert(key.second);
        const QString line = document::textOfKeys(
            lane.id.typeId, *KernelStore::instance().state(lane.id.objectId), frames, m_catalog);
        if (!line.isEmpty()) lines << line;
    }
    if (lines.isEmpty())
        emit noticed(tr("No key is selected: click one, or draw a rectangle around several"));
    else
        QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void TimelineView::paste() {
    const QStringList lines =
        QApplication::clipboard()->text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    std::map<int, InstanceState> states;
    QStringList leftOut;
    try {
        // One text goes into every target lane; of several, each goes into the lane of its filter.
        for (const int index : targetLanes()) {
            const Lane& lane = m_lanes[static_cast<std::size_t>(index)];
            const QString key = KernelStore::instance().filterKey(lane.id.typeId);
            for (const QString& line : lines) {
                if (lines.size() > 1 && !line.startsWith(key + QLatin1Char(':'))) continue;
                states[lane.id.objectId] = document::withKeysFromText(
                    lane.id.typeId, *KernelStore::instance().state(lane.id.objectId), line,
                    m_state.currentFrame(), m_catalog, leftOut);
            }
        }
    } catch (const document::FilterError& error) {
        emit noticed(QString::fromUtf8(error.what()));
        return;
    }
    if (states.empty()) {
        emit noticed(tr("There is no lane for these keys: animate a filter first"));
        return;
    }
    apply(states, tr("Paste keys (frame %1)").arg(m_state.currentFrame()));
    leftOut.removeDuplicates();
    if (!leftOut.isEmpty())
        emit noticed(tr("Left out, for this filter has no such parameter: %1")
                         .arg(leftOut.join(QStringLiteral(", "))));
}

void TimelineView::goToKey(int direction) {
    const qint64 here = m_state.currentFrame();
    std::set<qint64> all;
    for (const Lane& lane : m_lanes) all.insert(lane.frames.begin(), lane.frames.end());
    if (direction > 0) {
        const auto next = all.upper_bound(here);
        if (next != all.end()) m_state.setCurrentFrame(*next);
    } else {
        auto previous = all.lower_bound(here);
        if (previous != all.begin()) m_state.setCurrentFrame(*--previous);
    }
}

}  // namespace editor
