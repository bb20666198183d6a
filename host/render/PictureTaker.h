#pragma once

#include <map>
#include <mutex>
#include <optional>

#include "host/media/MediaSink.h"
#include "host/render/ResultTaker.h"

namespace render {

/// Writes the results as pictures and, where asked, counts the objects they show.
class PictureTaker : public ResultTaker {
public:
    enum class Objects { Ignored, Counted };

    PictureTaker(media::MediaSink& sink, Objects objects) : m_sink(sink), m_objects(objects) {}

    FrameRest take(const RenderedFrame& rendered) override;
    bool takesInOrder() const override { return m_sink.writesInOrder(); }

    /// How many objects the result of a frame shows, -1 when memory for counting ran out; none for
    /// one that shows no objects, or whose objects were not to be counted.
    std::optional<int> objectsOf(std::int64_t frame) const;

private:
    media::MediaSink& m_sink;
    const Objects m_objects;
    mutable std::mutex m_mutex;
    std::map<std::int64_t, int> m_counts;
};

}  // namespace render
