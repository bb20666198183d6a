#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "host/document/VariantRenderer.h"
#include "host/editor/Preview.h"
#include "host/media/MediaSource.h"

namespace editor {

/// Runs a VariantRenderer on a thread of its own. GUI thread, except for `deliver`.
class SweepRenderer {
public:
    struct Cell {
        Picture picture;  ///< reduced to the size asked for; null when it could not be rendered
        std::optional<int> objects;
    };
    /// Called once for each variant, row by row.
    using Deliver = std::function<void(quint64 run, std::size_t index, const Cell& cell)>;

    explicit SweepRenderer(Deliver deliver) : m_deliver(std::move(deliver)) {}
    ~SweepRenderer() { stop(); }
    SweepRenderer(const SweepRenderer&) = delete;
    SweepRenderer& operator=(const SweepRenderer&) = delete;

    /// Ends what is being rendered and starts anew. Returns the number of the run.
    quint64 start(const std::shared_ptr<const media::MediaSource>& source, qint64 frame,
                  const document::ParameterSweep& columns,
                  const std::optional<document::ParameterSweep>& rows, int longestSide);
    void stop();

private:
    void run(quint64 number, const std::shared_ptr<const media::MediaSource>& source, qint64 frame,
             std::size_t count, int longestSide);

    Deliver m_deliver;
    std::unique_ptr<document::VariantRenderer> m_variants;
    std::atomic<bool> m_isStopping{false};
    quint64 m_run = 0;
    std::thread m_thread;
};

}  // namespace editor
