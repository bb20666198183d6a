#include "host/render/FrameRun.h"

#include <algorithm>
#include <thread>

#include "host/document/FilterChain.h"
#include "host/render/CheckCommand.h"
#include "host/render/FrameJob.h"
#include "host/render/FrameList.h"
#include "host/render/StopSignal.h"

namespace render {

namespace {

int workerCount(int jobs, std::size_t frames) {
    const int wanted = jobs > 0 ? jobs : static_cast<int>(std::thread::hardware_concurrency());
    const int most = static_cast<int>(std::min<std::size_t>(frames, 1024));
    return std::clamp(wanted, 1, most);
}

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

ChosenFrames chooseFrames(const Selection& selection, const document::FilterCatalog& catalog) {
    document::setFilterChain(asQStrings(selection.filters), catalog);
    ChosenFrames chosen;
    chosen.source = media::MediaSource::open(selection.inputs, selection.reading);
    chosen.frames = chosenFrames(selection.frames, *chosen.source);
    return chosen;
}

void RunResult::throwEnding() const {
    if (ending) throw CommandError(ending->code, ending->error);
}

RunResult runChosen(const ChosenFrames& chosen, const RunOptions& options,
                    const std::function<std::vector<FrameWork>(int count)>& makeWorkers) {
    const std::vector<FrameWork> workers =
        makeWorkers(workerCount(options.jobs, chosen.frames.size()));
    const auto progress = Progress::make(options.quiet ? ProgressMode::None : options.progress,
                                         static_cast<int>(chosen.frames.size()), stderr);
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
        runFrames(chosen.frames, workers, rules, frameEnded, [&] { progress->tick(); });
    result.exitCode = exitCodeOf(result.outcomes, options.keepGoing);
    const FrameOutcome* failure = firstFailure(result.outcomes);
    if (failure && !options.keepGoing) result.ending = *failure;
    if (result.ending)
        progress->abandon();
    else
        progress->finish();
    return result;
}

RunResult renderChosen(const ChosenFrames& chosen, const RunOptions& options, ResultTaker& taker,
                       const Messages& messages) {
    FrameNotes notes;
    RunResult result = runChosen(chosen, options, [&](int count) {
        return renderingWorkers(count, RenderRequest{*chosen.source, chosen.frames, taker, &notes});
    });
    if (!options.quiet)
        for (const std::string& line : notes.lines()) messages.note(line);
    return result;
}

void warnBeforehand(const ChosenFrames& chosen, const RunOptions& options,
                    const Messages& messages) {
    if (options.quiet) return;
    for (const std::string& warning : warningsFor(*chosen.source, chosen.frames))
        messages.warning(warning);
}

}  // namespace render
