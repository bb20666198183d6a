#include "host/render/PictureTaker.h"

#include <new>

#include "host/imaging/Areas.h"
#include "host/render/ContentHash.h"

namespace render {

FrameRest PictureTaker::take(const RenderedFrame& rendered) {
    const std::int64_t frame = rendered.frame;
    ResultFacts* const facts = m_gathered == Facts::Gathered ? placeFor(rendered) : nullptr;
    FrameRest write = m_sink.encode(frame, rendered.image, rendered.properties);
    if (facts) gather(rendered, *facts);
    if (!m_book) return write;
    return [write = std::move(write), book = m_book, frame] {
        if (write) write();
        book->recordOutput(frame);
    };
}

ResultFacts* PictureTaker::placeFor(const RenderedFrame& rendered) {
    ResultFacts facts;
    if (rendered.showsObjects) facts.objects = -1;
    facts.notes = rendered.properties.notes;
    const std::lock_guard<std::mutex> lock(m_mutex);
    return &(m_facts[rendered.frame] = std::move(facts));
}

/// The picture may be written already: memory that runs out here is no failure of the frame.
void PictureTaker::gather(const RenderedFrame& rendered, ResultFacts& facts) {
    try {
        if (rendered.showsObjects) facts.objects = countWhiteAreas(rendered.image);
        facts.pixels = hashOfPixels(rendered.image);
    } catch (const std::bad_alloc&) {
    }
}

ResultFacts PictureTaker::factsOf(std::int64_t frame) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_facts.find(frame);
    return found == m_facts.end() ? ResultFacts() : found->second;
}

}  // namespace render
