#include "host/render/CheckCommand.h"

#include <cstdio>

#include "host/document/ChainCheck.h"
#include "host/document/FilterChain.h"
#include "host/media/MediaError.h"
#include "host/render/FrameList.h"

namespace render {

ExitCode runCheck(const CheckOptions& options, const document::FilterCatalog& catalog) {
    document::setFilterChain(asQStrings(options.filters), catalog);
    const auto source = media::MediaSource::open(options.inputs);
    const std::vector<std::int64_t> frames = chosenFrames(options.frames, *source);

    document::ChainCheck check;
    check.lookAtKeys(source->frames().front(), source->frames().back());
    for (std::int64_t frame : frames) {
        try {
            const media::PictureInfo info = source->info(frame);
            check.lookAtSettings(frame, info.width, info.height);
            if (check.wantsPicture()) check.lookAtPicture(frame, source->read(frame));
        } catch (const media::MediaError& error) {
            check.object(frame, error.what());
        }
    }
    const std::vector<std::string> objections = check.objections();
    for (const std::string& line : objections) std::printf("%s\n", line.c_str());
    if (objections.empty()) std::printf("%zu frames: nothing to object to\n", frames.size());
    return objections.empty() ? Done : SomeFramesFailed;
}

std::vector<std::string> warningsFor(const media::MediaSource& source,
                                     const std::vector<std::int64_t>& frames) {
    document::ChainCheck check;
    check.lookAtKeys(source.frames().front(), source.frames().back());
    try {
        // Frames of one sequence are of one size: the others are not opened before their turn.
        const media::PictureInfo info = source.info(frames.front());
        for (std::int64_t frame : frames) check.lookAtSettings(frame, info.width, info.height);
        if (check.wantsPicture()) check.lookAtPicture(frames.front(), source.read(frames.front()));
    } catch (const media::MediaError&) {
        // Rendering the frame will say so.
    }
    // The error of a single frame that is refused follows at once.
    return frames.size() == 1 ? check.advice() : check.objections();
}

}  // namespace render
