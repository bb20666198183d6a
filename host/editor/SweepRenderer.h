#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "host/document/ChainRenderer.h"
#include "host/editor/Preview.h"
#include "host/kernel/InstanceState.h"
#include "host/media/MediaSource.h"

namespace editor {

/// Renders one frame several times, each with another state of one filter, on a thread of its own.
/// What comes before that filter is rendered once. GUI thread, except for `deliver`.
class SweepRenderer {
public:
    struct Cell {
        Picture picture;  ///< reduced to the size asked for; null when it could not be rendered
        std::optional<int> objects;
    };
    using Deliver = std::function<void(quint64 run, std::size_t index, const Cell& cell)>;

    explicit SweepRenderer(Deliver deliver) : m_deliver(std::move(deliver)) {}
    ~SweepRenderer() { stop(); }
    SweepRenderer(const SweepRenderer&) = delete;
    SweepRenderer& operator=(const SweepRenderer&) = delete;

    /// Ends what is being rendered and starts anew. Returns the number of the run.
    quint64 start(const std::shared_ptr<const media::MediaSource>& source, qint64 frame,
                  int objectId, const std::vector<InstanceState>& states, int longestSide);
    void stop();

private:
    struct Trial {
        int objectId;
        std::unique_ptr<document::ChainRenderer> chain;
    };
    void run(quint64 number, const std::shared_ptr<const media::MediaSource>& source, qint64 frame,
             int step, int longestSide);

    Deliver m_deliver;
    std::vector<Trial> m_trials;
    std::atomic<bool> m_isStopping{false};
    quint64 m_run = 0;
    std::thread m_thread;
};

}  // namespace editor
