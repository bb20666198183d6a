#include "host/render/FrameJob.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <set>

#include "host/document/ChainRenderer.h"

namespace render {

void FrameNotes::add(std::int64_t frame, const std::vector<std::string>& notes) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::string& note : notes) {
        Frames& frames = m_notes.emplace(note, Frames{frame, frame}).first->second;
        frames.first = std::min(frames.first, frame);
        frames.last = std::max(frames.last, frame);
    }
}

std::vector<std::string> FrameNotes::lines() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> lines;
    for (const auto& [note, frames] : m_notes)
        lines.push_back(note + (frames.first == frames.last
                                    ? " (frame " + std::to_string(frames.first) + ")"
                                    : " (frames " + std::to_string(frames.first) + " to " +
                                          std::to_string(frames.last) + ")"));
    return lines;
}

namespace {

/// Lets one frame after the other through a stage that knows only one order.
class Turnstile {
public:
    Turnstile(bool isNeeded, const std::vector<std::int64_t>& frames)
        : m_frames(frames), m_isNeeded(isNeeded) {}

    /// A frame's way through: left at the latest when this ends, also by an error.
    class Way {
    public:
        Way(Turnstile& stile, std::int64_t frame) : m_stile(stile), m_frame(frame) {}
        Way(const Way&) = delete;
        Way& operator=(const Way&) = delete;
        ~Way() { leave(); }

        void awaitTurn() { m_stile.awaitTurn(m_frame); }
        void leave() {
            if (!m_left) m_stile.leave(m_frame);
            m_left = true;
        }

    private:
        Turnstile& m_stile;
        const std::int64_t m_frame;
        bool m_left = false;
    };

private:
    void awaitTurn(std::int64_t frame) {
        if (!m_isNeeded) return;
        std::unique_lock<std::mutex> lock(m_mutex);
        m_turned.wait(lock, [&] { return m_frames[m_next] == frame; });
    }
    void leave(std::int64_t frame) {
        if (!m_isNeeded) return;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_gone.insert(frame);
        while (m_next < m_frames.size() && m_gone.erase(m_frames[m_next]) > 0) ++m_next;
        m_turned.notify_all();
    }

    const std::vector<std::int64_t>& m_frames;
    const bool m_isNeeded;
    std::mutex m_mutex;
    std::condition_variable m_turned;
    std::set<std::int64_t> m_gone;  ///< left before their turn
    std::size_t m_next = 0;
};

/// What the workers of a run share.
struct Stages {
    explicit Stages(const RenderRequest& request, int workerCount)
        : job(request),
          reading(request.source.readsInOrder(), request.frames),
          taking(request.taker.takesInOrder(), request.frames),
          workers(workerCount) {}

    /// The frame this worker will probably read next.
    void expectAfter(std::int64_t frame) const {
        const auto begin = job.frames.begin();
        const auto found = std::lower_bound(begin, job.frames.end(), frame);
        if (job.frames.end() - found > workers) job.source.expect(*(found + workers));
    }

    const RenderRequest job;
    Turnstile reading;
    Turnstile taking;
    const int workers;
};

/// One worker: filters of its own, and a picture whose memory goes from frame to frame.
class Renderer {
public:
    explicit Renderer(std::shared_ptr<Stages> stages) : m_stages(std::move(stages)) {}

    FrameRest operator()(std::int64_t frame) {
        const RenderRequest& job = m_stages->job;
        Turnstile::Way reading(m_stages->reading, frame);
        Turnstile::Way taking(m_stages->taking, frame);
        m_stages->expectAfter(frame);

        media::PictureProperties properties;
        reading.awaitTurn();
        std::unique_ptr<HkImage> image = job.source.read(frame, &properties, std::move(m_recycled));
        reading.leave();
        if (job.notes) job.notes->add(frame, properties.notes);
        image = m_chain.render(std::move(image), frame);
        taking.awaitTurn();
        FrameRest rest = job.taker.take({frame, *image, properties, m_chain.showsObjects(frame)});
        m_recycled = std::move(image);
        return rest;
    }

private:
    const std::shared_ptr<Stages> m_stages;
    document::ChainRenderer m_chain;
    std::unique_ptr<HkImage> m_recycled;
};

}  // namespace

std::vector<FrameWork> renderingWorkers(int count, const RenderRequest& request) {
    const auto stages = std::make_shared<Stages>(request, count);
    std::vector<FrameWork> workers;
    for (int i = 0; i < count; ++i) {
        // A FrameWork is copied about: the renderer is shared by its copies, not by workers.
        const auto renderer = std::make_shared<Renderer>(stages);
        workers.push_back([renderer](std::int64_t frame) { return (*renderer)(frame); });
    }
    return workers;
}

std::vector<FrameWork> inspectingWorkers(int count, const media::MediaSource& source) {
    const FrameWork inspect([&source](std::int64_t frame) { source.info(frame); });
    return std::vector<FrameWork>(static_cast<std::size_t>(count), inspect);
}

}  // namespace render
