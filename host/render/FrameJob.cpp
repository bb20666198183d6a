#include "host/render/FrameJob.h"

#include <memory>
#include <stdexcept>

#include "host/document/ChainRenderer.h"

namespace render {

std::vector<FrameWork> renderingWorkers(int count, const media::MediaSource& source,
                                        ResultTaker& taker) {
    std::vector<FrameWork> workers;
    for (int i = 0; i < count; ++i) {
        // A std::function is copied about: the filters are shared by its copies, not by workers.
        const auto chain = std::make_shared<document::ChainRenderer>();
        workers.push_back([chain, &source, &taker](std::int64_t frame) {
            media::PictureProperties properties;
            std::unique_ptr<HkImage> image = source.read(frame, &properties);
            image = chain->render(std::move(image), frame);
            taker.take({frame, *image, properties, chain->showsObjects(frame)});
        });
    }
    return workers;
}

std::vector<FrameWork> inspectingWorkers(int count, const media::MediaSource& source) {
    const FrameWork inspect = [&source](std::int64_t frame) { source.info(frame); };
    return std::vector<FrameWork>(static_cast<std::size_t>(count), inspect);
}

}  // namespace render
