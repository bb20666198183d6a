#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/media/MediaSink.h"
#include "host/render/OutputBook.h"
#include "host/render/ResultTaker.h"

namespace render {

/// What a report tells of a result beside its file.
struct ResultFacts {
    /// How many objects it shows, -1 when memory ran out; none when it shows none.
    std::optional<int> objects;
    std::string pixels;              ///< their hash; empty when memory ran out
    std::vector<std::string> notes;  ///< what of the input is not in it
};

/// Writes the results as pictures, records them where asked, and gathers facts about them.
class PictureTaker : public ResultTaker {
public:
    enum class Facts { Ignored, Gathered };

    /// book: is told of every output that is complete; null: nobody asks.
    PictureTaker(media::MediaSink& sink, Facts facts, OutputBook* book = nullptr)
        : m_sink(sink), m_gathered(facts), m_book(book) {}

    FrameRest take(const RenderedFrame& rendered) override;
    bool takesInOrder() const override { return m_sink.writesInOrder(); }

    /// Of a frame that was taken, if facts were to be gathered; else none.
    ResultFacts factsOf(std::int64_t frame) const;

private:
    /// For what will be gathered of this frame; stays where it is.
    ResultFacts* placeFor(const RenderedFrame& rendered);
    static void gather(const RenderedFrame& rendered, ResultFacts& facts);

    media::MediaSink& m_sink;
    const Facts m_gathered;
    OutputBook* const m_book;
    mutable std::mutex m_mutex;
    std::map<std::int64_t, ResultFacts> m_facts;
};

}  // namespace render
