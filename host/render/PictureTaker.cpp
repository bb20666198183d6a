#include "host/render/PictureTaker.h"

#include "host/imaging/Areas.h"

namespace render {

void PictureTaker::take(const RenderedFrame& rendered) {
    m_sink.write(rendered.frame, rendered.image, rendered.properties);
    if (m_objects == Objects::Ignored || !rendered.showsObjects) return;
    const int count = countWhiteAreas(rendered.image);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_counts[rendered.frame] = count;
}

std::optional<int> PictureTaker::objectsOf(std::int64_t frame) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_counts.find(frame);
    return found == m_counts.end() ? std::optional<int>() : found->second;
}

}  // namespace render
