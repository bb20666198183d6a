#include "host/editor/ObjectCounter.h"

#include <exception>
#include <utility>

namespace editor {

ObjectCounter::ObjectCounter(Deliver deliver)
    : m_deliver(std::move(deliver)), m_thread([this] { run(); }) {}

ObjectCounter::~ObjectCounter() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void ObjectCounter::start(Job job) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_next = std::move(job);
    }
    m_changed.notify_one();
}

bool ObjectCounter::isSuperseded() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_next || m_isEnding;
}

void ObjectCounter::run() {
    for (;;) {
        Job job;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_changed.wait(lock, [this] { return m_next || m_isEnding; });
            if (m_isEnding) return;
            job = std::move(*m_next);
            m_next.reset();
        }
        count(job);
    }
}

void ObjectCounter::count(Job& job) {
    for (const std::int64_t frame : job.frames) {
        if (isSuperseded()) return;
        try {
            const auto result = job.chain->render(job.source->read(frame), frame);
            if (const auto objects = job.chain->objectsIn(*result, frame))
                m_deliver(job.number, frame, *objects);
        } catch (const std::exception&) {
            // A frame that cannot be rendered has no count; the preview says why when it is shown.
        }
    }
}

}  // namespace editor
