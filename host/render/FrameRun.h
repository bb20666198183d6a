#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "host/document/FilterCatalog.h"
#include "host/media/MediaSource.h"
#include "host/render/CommandLine.h"
#include "host/render/FrameRunner.h"
#include "host/render/Messages.h"

namespace render {

/// The frames that a command works on.
struct ChosenFrames {
    std::unique_ptr<media::MediaSource> source;
    std::vector<std::int64_t> frames;  ///< ascending, at least one
};

/// Puts the filters into the kernel store and opens the input they are to run over. Throws
/// UsageError, document::FilterError or media::MediaError.
ChosenFrames chooseFrames(const Selection& selection, const document::FilterCatalog& catalog);

/// What became of the frames of a run.
struct RunResult {
    std::vector<FrameOutcome> outcomes;  ///< in the order of the frames
    ExitCode exitCode = Done;            ///< what the command ends with
    std::optional<FrameOutcome> ending;  ///< the failure that ended it, without --keep-going

    /// Throws it as a CommandError, if there is one.
    void throwEnding() const;
};

/// Runs the frames with as many workers as the options allow, shows how far it is and what fails,
/// and stops when a signal asks for it.
RunResult runChosen(const ChosenFrames& chosen, const RunOptions& options,
                    const std::function<std::vector<FrameWork>(int count)>& makeWorkers);

/// Says what is known beforehand to make a result meaningless, unless the options want quiet.
void warnBeforehand(const ChosenFrames& chosen, const RunOptions& options,
                    const Messages& messages);

}  // namespace render
