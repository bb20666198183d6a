#include "host/render/FrameJob.h"

#include <memory>
#include <stdexcept>

#include "host/document/ChainRenderer.h"

namespace render {

void ObjectCounts::set(std::int64_t frame, int count) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_counts[frame] = count;
}

std::optional<int> ObjectCounts::of(std::int64_t frame) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_counts.find(frame);
    return found == m_counts.end() ? std::optional<int>() : found->second;
}

std::vector<FrameWork> renderingWorkers(int count, const media::MediaSource& source,
                                        media::MediaSink& sink, ObjectCounts& counts) {
    std::vector<FrameWork> workers;
    for (int i = 0; i < count; ++i) {
        // A std::function is copied about: the filters are shared by its copies, not by workers.
        const auto chain = std::make_shared<document::ChainRenderer>();
        workers.push_back([chain, &source, &sink, &counts](std::int64_t frame) {
            try {
                media::PictureProperties properties;
                std::unique_ptr<HkImage> image = source.read(frame, &properties);
                image = chain->render(std::move(image), frame);
                sink.write(frame, *image, properties);
                const std::optional<int> objects = chain->objectsIn(*image, frame);
                if (objects) counts.set(frame, *objects);
            } catch (...) {
                sink.leaveOut(frame);
                throw;
            }
        });
    }
    return workers;
}

std::vector<FrameWork> inspectingWorkers(int count, const media::MediaSource& source) {
    const FrameWork inspect = [&source](std::int64_t frame) { source.info(frame); };
    return std::vector<FrameWork>(static_cast<std::size_t>(count), inspect);
}

}  // namespace render
