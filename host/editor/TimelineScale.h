#pragma once

#include <QRectF>
#include <QSize>
#include <cstdint>
#include <vector>

namespace editor {

/// Where things lie in a timeline of a size: the ruler at the top, lanes below it, the curve at the
/// bottom; titles at the left of all, then the frames from left to right.
class TimelineScale {
public:
    static constexpr int kHeader = 170;  ///< for titles
    static constexpr int kRuler = 22, kLane = 24, kCurve = 56, kMargin = 14;
    static constexpr double kKeyRadius = 5;

    /// Frames ascend; they outlive the scale.
    TimelineScale(const std::vector<std::int64_t>& frames, QSize size, int laneCount)
        : m_frames(frames), m_size(size), m_laneCount(laneCount) {}

    double xOf(double frame) const;
    double xOfKey(qint64 frame) const;  ///< keys outside the frames lie in the margins
    qint64 frameAt(double x) const;     ///< one of the range; 0 when there are none

    QRectF laneRect(int lane) const;
    int laneAt(double y) const;  ///< -1 outside the lanes
    QRectF curveRect() const;

private:
    int lanesBottom() const { return kRuler + m_laneCount * kLane; }

    const std::vector<std::int64_t>& m_frames;
    const QSize m_size;
    const int m_laneCount;
};

}  // namespace editor
