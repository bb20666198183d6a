#pragma once

#include <QObject>
#include <QPoint>
#include <QPointF>
#include <QSize>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/editor/Preview.h"

namespace editor {

/// What the panels share. Each setter announces a change, and only a change. GUI thread.
class EditorState : public QObject {
    Q_OBJECT

public:
    explicit EditorState(QObject* parent = nullptr) : QObject(parent) {}

    // --- Frames of the input ---

    /// Ascending; empty while nothing is open. The first of them becomes the current one.
    void setFrames(std::vector<std::int64_t> frames);
    const std::vector<std::int64_t>& frames() const { return m_frames; }

    /// Goes to the nearest frame that the input has. The store holds it, for the pages' sake.
    void setCurrentFrame(qint64 frame);
    qint64 currentFrame() const;
    void stepFrames(int count);  ///< so many frames on (back), as far as there are any

    // --- Which picture is shown ---

    /// The object id of the filter after which the picture is shown, or kResultStage, kSourceStage.
    void setShownStage(int stage);
    int shownStage() const { return m_shownStage; }

    void setComparison(Comparison comparison);
    Comparison comparison() const { return m_comparison; }

    void setPreview(std::shared_ptr<const Preview> preview);
    /// Never null; without pictures while nothing is open.
    const std::shared_ptr<const Preview>& preview() const { return m_preview; }

    // --- How it is shown ---

    /// Device pixels per pixel of the picture; 0 for "as large as fits".
    void setZoom(double zoom);
    double zoom() const { return m_zoom; }
    /// The point of the picture, 0 ... 1 on both axes, in the middle of the view.
    void setCentre(QPointF centre);
    QPointF centre() const { return m_centre; }

    /// The size in device pixels at which the whole picture was last drawn; announces nothing.
    void setDrawnSize(QSize size) { m_drawnSize = size; }
    QSize drawnSize() const { return m_drawnSize; }

    /// The pixel under the pointer; outside the picture when there is none.
    void setProbe(QPoint pixel);
    QPoint probe() const { return m_probe; }

signals:
    void framesChanged();
    void currentFrameChanged(qint64 frame);
    void shownStageChanged(int stage);
    void comparisonChanged();
    void previewChanged();
    void viewChanged();  ///< zoom or centre
    void probeChanged();

private:
    std::vector<std::int64_t> m_frames;
    int m_shownStage = kResultStage;
    Comparison m_comparison = Comparison::None;
    std::shared_ptr<const Preview> m_preview = std::make_shared<Preview>();
    double m_zoom = 0;
    QPointF m_centre{0.5, 0.5};
    QSize m_drawnSize;
    QPoint m_probe{-1, -1};
};

}  // namespace editor
