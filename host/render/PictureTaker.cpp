#include "host/render/PictureTaker.h"

#include "host/imaging/Areas.h"
#include "host/render/ContentHash.h"

namespace render {

FrameRest PictureTaker::take(const RenderedFrame& rendered) {
    const std::int64_t frame = rendered.frame;
    if (m_gathered == Facts::Gathered) {
        ResultFacts facts;
        if (rendered.showsObjects) facts.objects = countWhiteAreas(rendered.image);
        facts.pixels = hashOfPixels(rendered.image);
        facts.notes = rendered.properties.notes;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_facts[frame] = std::move(facts);
    }
    FrameRest write = m_sink.encode(frame, rendered.image, rendered.properties);
    if (!m_book) return write;
    return [write = std::move(write), book = m_book, frame] {
        if (write) write();
        book->recordOutput(frame);
    };
}

ResultFacts PictureTaker::factsOf(std::int64_t frame) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_facts.find(frame);
    return found == m_facts.end() ? ResultFacts() : found->second;
}

}  // namespace render
