#include "host/editor/EditorState.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/kernel/KernelStore.h"

namespace editor {

namespace {

/// The index of the frame that is nearest, the earlier of two.
std::size_t nearestIndex(const std::vector<std::int64_t>& frames, qint64 frame) {
    const auto next = std::lower_bound(frames.begin(), frames.end(), frame);
    if (next == frames.begin()) return 0;
    if (next == frames.end()) return frames.size() - 1;
    const bool isNextNearer = *next - frame < frame - *(next - 1);
    return static_cast<std::size_t>(next - frames.begin()) - (isNextNearer ? 0 : 1);
}

}  // namespace

void EditorState::setFrames(std::vector<std::int64_t> frames) {
    m_frames = std::move(frames);
    emit framesChanged();
    setCurrentFrame(m_frames.empty() ? 0 : m_frames.front());
}

qint64 EditorState::currentFrame() const {
    return HkFXKernelData::getInstance()->currentFrame;
}

void EditorState::setCurrentFrame(qint64 frame) {
    if (!m_frames.empty()) frame = m_frames[nearestIndex(m_frames, frame)];
    frame = std::clamp<qint64>(frame, 0, std::numeric_limits<quint32>::max());
    if (frame == currentFrame()) return;
    KernelStore::instance().setCurrentFrame(static_cast<quint32>(frame));
    emit currentFrameChanged(frame);
}

void EditorState::stepFrames(int count) {
    if (m_frames.empty()) return;
    const auto index = static_cast<qint64>(nearestIndex(m_frames, currentFrame())) + count;
    const auto last = static_cast<qint64>(m_frames.size()) - 1;
    setCurrentFrame(m_frames[static_cast<std::size_t>(std::clamp<qint64>(index, 0, last))]);
}

void EditorState::setShownStage(int stage) {
    if (stage == m_shownStage) return;
    m_shownStage = stage;
    emit shownStageChanged(stage);
}

void EditorState::setComparison(Comparison comparison) {
    if (comparison == m_comparison) return;
    m_comparison = comparison;
    emit comparisonChanged();
}

void EditorState::setPreview(std::shared_ptr<const Preview> preview) {
    m_preview = std::move(preview);
    emit previewChanged();
}

void EditorState::setZoom(double zoom) {
    if (zoom == m_zoom) return;
    m_zoom = zoom;
    emit viewChanged();
}

void EditorState::setCentre(QPointF centre) {
    centre = QPointF(std::clamp(centre.x(), 0.0, 1.0), std::clamp(centre.y(), 0.0, 1.0));
    if (centre == m_centre) return;
    m_centre = centre;
    emit viewChanged();
}

void EditorState::setProbe(QPoint pixel) {
    if (pixel == m_probe) return;
    m_probe = pixel;
    emit probeChanged();
}

}  // namespace editor
