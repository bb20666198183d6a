#include "host/render/VerifyCommand.h"

#include <cstdio>

#include "host/media/MediaSink.h"
#include "host/render/FrameRanges.h"
#include "host/render/FrameRun.h"
#include "host/render/OutputBook.h"

namespace render {

ExitCode runVerify(const VerifyOptions& options, const document::FilterCatalog& catalog,
                   const Messages& messages) {
    const ChosenFrames chosen = chooseFrames(options, catalog, messages);
    const std::vector<std::int64_t>& frames = chosen.frames;
    media::WriteOptions writing = options.writing;
    writing.onlyNames = true;
    const auto sink = media::MediaSink::open(options.output, *chosen.source, frames, writing);
    const OutputBook book(
        *chosen.source, *sink, frames,
        {options.plugin, chosen.range, std::to_string(options.writing.compression)}, "verify");
    std::size_t good = 0;
    std::string said;
    std::vector<FrameRange> range;  // of frames of which the same is to be said
    const auto say = [&] {
        if (!range.empty()) std::printf("%s: %s\n", range.front().text().c_str(), said.c_str());
        range.clear();
    };
    for (const std::int64_t frame : frames) {
        const Standing standing = book.standingOf(frame, OutputBook::Look::Thorough);
        const bool isGood = standing.kind == Standing::UpToDate;
        if (isGood || standing.text != said) say();
        if (isGood) {
            ++good;
            continue;
        }
        said = standing.text;
        if (range.empty()) range.push_back({frame, frame});
        range.front().last = frame;
    }
    say();
    const bool isComplete = good == frames.size();
    std::printf("%zu of %s %s there, up to date and undamaged\n", good,
                frameCountText(frames.size()).c_str(), good == 1 ? "is" : "are");
    return isComplete ? Done : SomeFramesFailed;
}

}  // namespace render
