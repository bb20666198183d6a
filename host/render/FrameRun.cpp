#include "host/render/FrameRun.h"

#include <algorithm>
#include <thread>

#include "host/document/FilterChain.h"
#include "host/document/FilterError.h"
#include "host/media/file_names.h"
#include "host/render/CheckCommand.h"
#include "host/render/FrameJob.h"
#include "host/render/FrameList.h"
#include "host/render/MemoryLimit.h"
#include "host/render/ProjectFile.h"
#include "host/render/StopSignal.h"

namespace render {

namespace {

const FrameOutcome* firstFailure(const std::vector<FrameOutcome>& outcomes) {
    const auto failed = std::find_if(
        outcomes.begin(), outcomes.end(),
        [](const FrameOutcome& outcome) { return outcome.status == FrameOutcome::Failed; });
    return failed == outcomes.end() ? nullptr : &*failed;
}

ExitCode exitCodeOf(const std::vector<FrameOutcome>& outcomes, bool keepGoing) {
    const FrameOutcome* failure = firstFailure(outcomes);
    if (failure && !keepGoing) return failure->code;
    const bool allBegun = std::none_of(
        outcomes.begin(), outcomes.end(),
        [](const FrameOutcome& outcome) { return outcome.status == FrameOutcome::NotStarted; });
    if (!allBegun) return StopSignal::exitCode();
    return failure ? SomeFramesFailed : Done;
}

}  // namespace

ChosenFrames chooseFrames(const Selection& selection, const document::FilterCatalog& catalog,
                          const Messages& messages) {
    ChosenFrames chosen;
    chosen.range = selection.range;
    std::vector<std::string> inputs = selection.inputs;
    media::ReadOptions reading = selection.reading;
    if (selection.filters.empty()) {
        const std::string& file = selection.inputs.front();
        const document::Project project = readProjectFile(file, messages);
        const auto refuse = [&](const std::string& why) {
            throw CommandError(InvalidData, media::shown(file) + ": " + why);
        };
        if (project.inputs.empty()) refuse("the project names no input; save it with one");
        inputs = project.inputs;
        if (chosen.range.empty() && !project.range.empty()) {
            chosen.range = project.range;
            try {
                reading.range = parseRange(project.range);
            } catch (const UsageError& error) {
                refuse(error.what());
            }
        }
    } else {
        document::setFilterChain(asQStrings(selection.filters), catalog);
    }
    for (const QString& text : asQStrings(selection.overrides)) {
        try {
            document::overrideFilter(text, catalog);
        } catch (const document::FilterError& error) {
            throw UsageError(std::string("--set: ") + error.what());
        }
    }
    chosen.source = media::MediaSource::open(inputs, reading);
    chosen.frames = chosenFrames(selection.frames, *chosen.source);
    return chosen;
}

void RunResult::throwEnding() const {
    if (ending) throw CommandError(ending->code, ending->error);
}

int jobsFor(const RunOptions& options, std::size_t frameCount) {
    const int wanted =
        options.jobs > 0 ? options.jobs : static_cast<int>(std::thread::hardware_concurrency());
    const int most = static_cast<int>(std::clamp<std::size_t>(frameCount, 1, 1024));
    return std::clamp(wanted, 1, most);
}

RunResult runFrames(const std::vector<std::int64_t>& frames, const RunOptions& options,
                    const std::function<std::vector<FrameWork>(int count)>& makeWorkers) {
    if (frames.empty()) return {};
    const std::vector<FrameWork> workers = makeWorkers(jobsFor(options, frames.size()));
    const auto progress = Progress::make(options.quiet ? ProgressMode::None : options.progress,
                                         static_cast<int>(frames.size()), stderr);
    const auto frameEnded = [&](const FrameOutcome& outcome) {
        progress->frameEnded(outcome);
        // Without --keep-going the run ends with the error, which is then the program's.
        const bool failed = outcome.status == FrameOutcome::Failed;
        if (failed && options.keepGoing) progress->reportFailure(outcome);
    };
    RunRules rules;
    rules.keepGoing = options.keepGoing;
    rules.shouldStop = &StopSignal::requested;
    RunResult result;
    result.outcomes =
        render::runFrames(frames, workers, rules, frameEnded, [&] { progress->tick(); });
    result.exitCode = exitCodeOf(result.outcomes, options.keepGoing);
    const FrameOutcome* failure = firstFailure(result.outcomes);
    if (failure && !options.keepGoing) result.ending = *failure;
    if (result.ending)
        progress->abandon();
    else
        progress->finish();
    return result;
}

RunResult renderFrames(const media::MediaSource& source, const std::vector<std::int64_t>& frames,
                       RunOptions options, ResultTaker& taker, const Messages& messages) {
    limitJobs(options, source, frames, messages);
    FrameNotes notes;
    RunResult result = runFrames(frames, options, [&](int count) {
        return renderingWorkers(count, RenderRequest{source, frames, taker, &notes});
    });
    for (const std::string& line : notes.lines()) messages.note(line);
    return result;
}

document::ChainCheck warnBeforehand(const media::MediaSource& source,
                                    const std::vector<std::int64_t>& frames,
                                    const Messages& messages) {
    for (const std::string& notice : source.notices()) messages.warning(notice);
    document::ChainCheck check = checkBeforehand(source, frames);
    // The error of a single frame that is refused follows at once.
    for (const std::string& warning : frames.size() == 1 ? check.advice() : check.objections())
        messages.warning(warning);
    return check;
}

}  // namespace render
