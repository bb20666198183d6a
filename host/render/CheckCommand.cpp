#include "host/render/CheckCommand.h"

#include <cstdio>

#include "host/document/ChainCheck.h"
#include "host/media/MediaError.h"
#include "host/render/FrameRun.h"

namespace render {

ExitCode runCheck(const Selection& selection, const document::FilterCatalog& catalog,
                  const Messages& messages) {
    const ChosenFrames chosen = chooseFrames(selection, catalog, messages);
    document::ChainCheck check;
    check.lookAtKeys(chosen.source->frames().front(), chosen.source->frames().back());
    for (std::int64_t frame : chosen.frames) {
        try {
            const media::PictureInfo info = chosen.source->info(frame);
            check.lookAtSettings(frame, info.width, info.height);
            if (check.wantsPicture(info.channels))
                check.lookAtPicture(frame, chosen.source->read(frame));
        } catch (const media::MediaError& error) {
            check.object(frame, error.what());
        }
    }
    const std::vector<std::string> objections = check.objections();
    for (const std::string& line : objections) std::printf("%s\n", line.c_str());
    if (objections.empty())
        std::printf("%s: nothing to object to\n", frameCountText(chosen.frames.size()).c_str());
    return objections.empty() ? Done : SomeFramesFailed;
}

document::ChainCheck checkBeforehand(const media::MediaSource& source,
                                     const std::vector<std::int64_t>& frames) {
    document::ChainCheck check;
    if (frames.empty()) return check;
    check.lookAtKeys(source.frames().front(), source.frames().back());
    try {
        // Frames of one sequence are of one size: the others are not opened before their turn.
        const media::PictureInfo info = source.info(frames.front());
        for (std::int64_t frame : frames) check.lookAtSettings(frame, info.width, info.height);
        if (check.wantsPicture(info.channels))
            check.lookAtPicture(frames.front(), source.read(frames.front()));
    } catch (const media::MediaError&) {
        // Rendering the frame will say so.
    }
    return check;
}

}  // namespace render
