#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "host/media/MediaSource.h"
#include "host/render/FrameRunner.h"
#include "host/render/ResultTaker.h"

namespace render {

/// What of the inputs is not in the frames, gathered from all workers: each note once.
class FrameNotes {
public:
    void add(std::int64_t frame, const std::vector<std::string>& notes);
    /// One line each: "16 bits cut to 8 (frames 3 to 9)".
    std::vector<std::string> lines() const;

private:
    struct Frames {
        std::int64_t first, last;
    };
    mutable std::mutex m_mutex;
    std::map<std::string, Frames> m_notes;
};

/// What to render. All of it must outlive the workers.
struct RenderRequest {
    const media::MediaSource& source;
    const std::vector<std::int64_t>& frames;  ///< in the order in which they will be begun
    ResultTaker& taker;
    FrameNotes* notes = nullptr;  ///< null: nobody asks
};

/// The workers that read frames, run them through the filters of the kernel store and hand them to
/// the taker; each with filters of its own. GUI thread.
std::vector<FrameWork> renderingWorkers(int count, const RenderRequest& request);

/// The workers of a dry run: they look at the inputs without decoding or writing anything.
std::vector<FrameWork> inspectingWorkers(int count, const media::MediaSource& source);

}  // namespace render
