#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "host/document/ChainCheck.h"
#include "host/document/FilterCatalog.h"
#include "host/media/MediaSource.h"
#include "host/render/CommandLine.h"
#include "host/render/FrameRunner.h"
#include "host/render/Messages.h"
#include "host/render/ResultTaker.h"

namespace render {

/// The frames that a command works on.
struct ChosenFrames {
    std::unique_ptr<media::MediaSource> source;
    std::vector<std::int64_t> frames;  ///< ascending, at least one
    std::string range;                 ///< of sample values, as typed or saved; may be empty
};

/// Puts the filters, or those of a project, into the kernel store and opens the input they are to
/// run over. Throws CommandError, document::FilterError or media::MediaError.
ChosenFrames chooseFrames(const Selection& selection, const document::FilterCatalog& catalog,
                          const Messages& messages);

/// What became of the frames of a run.
struct RunResult {
    std::vector<FrameOutcome> outcomes;  ///< in the order of the frames
    ExitCode exitCode = Done;            ///< what the command ends with
    std::optional<FrameOutcome> ending;  ///< the failure that ended it, without --keep-going

    /// Throws it as a CommandError, if there is one.
    void throwEnding() const;

    /// Nothing ended the run before its time: a file of many frames is to be finished.
    bool isWhole() const { return exitCode == Done || exitCode == SomeFramesFailed; }
};

/// How many frames are worked on at once, unless memory is short.
int jobsFor(const RunOptions& options, std::size_t frameCount);

/// Runs the frames, of which there may be none, with as many workers as the options allow, shows
/// how far it is and what fails, and stops when a signal asks for it.
RunResult runFrames(const std::vector<std::int64_t>& frames, const RunOptions& options,
                    const std::function<std::vector<FrameWork>(int count)>& makeWorkers);

/// The same with workers that run each frame through the filters and hand it to the taker. Says
/// what of the inputs is not in the frames, and that there are fewer jobs for lack of memory.
/// Throws UsageError when one frame takes more memory than the options allow.
RunResult renderFrames(const media::MediaSource& source, const std::vector<std::int64_t>& frames,
                       RunOptions options, ResultTaker& taker, const Messages& messages);

/// Looks at what is known beforehand to make a result meaningless, unless the options want quiet.
/// Says it and returns it.
document::ChainCheck warnBeforehand(const media::MediaSource& source,
                                    const std::vector<std::int64_t>& frames,
                                    const Messages& messages);

}  // namespace render
