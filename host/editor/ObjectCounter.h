#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "host/document/ChainRenderer.h"
#include "host/media/MediaSource.h"

namespace editor {

/// Counts the objects of one frame after the other on a thread of its own. A new job takes the
/// place of the one at work after its frame. Knows no widget.
class ObjectCounter {
public:
    struct Job {
        quint64 number = 0;
        std::shared_ptr<const media::MediaSource> source;
        std::shared_ptr<document::ChainRenderer> chain;
        std::vector<std::int64_t> frames;  ///< in the order in which they are counted
    };
    /// Called on the counter's thread, for frames that show objects.
    using Deliver = std::function<void(quint64 job, qint64 frame, int count)>;

    explicit ObjectCounter(Deliver deliver);
    ~ObjectCounter();
    ObjectCounter(const ObjectCounter&) = delete;
    ObjectCounter& operator=(const ObjectCounter&) = delete;

    void start(Job job);  ///< one without frames only ends the job at work

private:
    void run();
    bool isSuperseded();
    void count(Job& job);

    Deliver m_deliver;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<Job> m_next;
    bool m_isEnding = false;
    std::thread m_thread;
};

}  // namespace editor
