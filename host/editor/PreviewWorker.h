#pragma once

#include <QSize>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "host/document/ChainRenderer.h"
#include "host/editor/Preview.h"
#include "host/editor/StageCache.h"
#include "host/media/MediaSource.h"

namespace editor {

struct PreviewRequest {
    quint64 number = 0;
    std::shared_ptr<const media::MediaSource> source;
    quint64 sourceId = 0;  ///< another one for each source that was opened
    std::shared_ptr<document::ChainRenderer> chain;
    qint64 frame = 0;
    int stage = kResultStage;
    Comparison comparison = Comparison::None;
    int reduction = 1;
    QSize drawnSize;  ///< see EditorState::drawnSize()
};

/// Renders frames on a thread of its own. Only the newest request counts: one that waits is
/// replaced, one that is being rendered is given up between two filters, unless the last picture is
/// so old that a drag would seem to stand still. Knows no widget.
class PreviewWorker {
public:
    using Deliver = std::function<void(std::shared_ptr<const Preview>)>;

    /// deliver is called on the worker's thread, twice for a full picture: without and with levels.
    PreviewWorker(Deliver deliver, std::size_t cacheBytes);
    ~PreviewWorker();  ///< waits for the filter at work
    PreviewWorker(const PreviewWorker&) = delete;
    PreviewWorker& operator=(const PreviewWorker&) = delete;

    void request(PreviewRequest request);

    /// To be called on the GUI thread after each change of the store: a picture whose filter may
    /// have seen values in between is shown, but not kept.
    void noteEdit() { ++m_edits; }

private:
    using Clock = std::chrono::steady_clock;

    void run();
    bool hasNewer();
    bool isToBeGivenUp();
    std::shared_ptr<Preview> render(const PreviewRequest& request);
    StageCache::Stage sourceStage(const PreviewRequest& request, Preview& preview);
    void addComparison(const PreviewRequest& request, Preview& preview) const;
    /// Drawing a large picture small takes the window longer than it may be away.
    void addFitted(const PreviewRequest& request, Preview& preview) const;

    Deliver m_deliver;
    std::atomic<quint64> m_edits{0};

    std::mutex m_mutex;  // guards the next two
    std::condition_variable m_changed;
    std::optional<PreviewRequest> m_next;
    bool m_isEnding = false;

    // The thread's own.
    StageCache m_cache;
    Clock::time_point m_lastDelivery;
    std::thread m_thread;
};

}  // namespace editor
