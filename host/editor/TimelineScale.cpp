#include "host/editor/TimelineScale.h"

#include <algorithm>
#include <cmath>

namespace editor {

double TimelineScale::xOf(double frame) const {
    const double left = kHeader + kMargin, right = m_size.width() - kMargin;
    if (m_frames.size() < 2) return left;
    const auto first = static_cast<double>(m_frames.front());
    return left + (frame - first) / (static_cast<double>(m_frames.back()) - first) * (right - left);
}

double TimelineScale::xOfKey(qint64 frame) const {
    const double reach = kMargin - kKeyRadius;
    const double left = kHeader + kMargin, right = std::max(left, m_size.width() - 1.0 * kMargin);
    return std::clamp(xOf(static_cast<double>(frame)), left - reach, right + reach);
}

qint64 TimelineScale::frameAt(double x) const {
    if (m_frames.empty()) return 0;
    const auto first = static_cast<double>(m_frames.front()),
               last = static_cast<double>(m_frames.back());
    const double span = xOf(last) - xOf(first);
    if (span <= 0) return m_frames.front();
    const double frame = first + (x - xOf(first)) / span * (last - first);
    return std::llround(std::clamp(frame, first, last));
}

QRectF TimelineScale::laneRect(int lane) const {
    return QRectF(0, kRuler + lane * kLane, m_size.width(), kLane);
}

int TimelineScale::laneAt(double y) const {
    const int lane = static_cast<int>(std::floor((y - kRuler) / kLane));
    return y >= kRuler && lane < m_laneCount ? lane : -1;
}

QRectF TimelineScale::curveRect() const {
    const int top = std::max(lanesBottom(), m_size.height() - kCurve);
    return QRectF(0, top, m_size.width(), m_size.height() - top);
}

}  // namespace editor
