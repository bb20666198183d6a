#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "host/media/MediaSink.h"
#include "host/media/MediaSource.h"
#include "host/render/FrameRunner.h"

namespace render {

/// How many objects the result of a frame shows, gathered from all workers.
class ObjectCounts {
public:
    void set(std::int64_t frame, int count);
    std::optional<int> of(std::int64_t frame) const;  ///< none for a frame that shows no objects

private:
    mutable std::mutex m_mutex;
    std::map<std::int64_t, int> m_counts;
};

/// The workers that read frames, run them through the filters of the kernel store and write them;
/// each with filters of its own. What they are given must outlive them. GUI thread.
std::vector<FrameWork> renderingWorkers(int count, const media::MediaSource& source,
                                        media::MediaSink& sink, ObjectCounts& counts);

/// The workers of a dry run: they look at the inputs without decoding or writing anything.
std::vector<FrameWork> inspectingWorkers(int count, const media::MediaSource& source);

}  // namespace render
