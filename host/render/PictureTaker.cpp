#include "host/render/PictureTaker.h"

#include "host/imaging/Areas.h"

namespace render {

FrameRest PictureTaker::take(const RenderedFrame& rendered) {
    if (m_objects == Objects::Counted && rendered.showsObjects) {
        const int count = countWhiteAreas(rendered.image);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_counts[rendered.frame] = count;
    }
    return m_sink.encode(rendered.frame, rendered.image, rendered.properties);
}

std::optional<int> PictureTaker::objectsOf(std::int64_t frame) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_counts.find(frame);
    return found == m_counts.end() ? std::optional<int>() : found->second;
}

}  // namespace render
