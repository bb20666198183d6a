#include "host/render/ApplyCommand.h"

#include <QFile>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>

#include "host/document/FilterChain.h"
#include "host/media/MediaSink.h"
#include "host/media/MediaSource.h"
#include "host/render/CheckCommand.h"
#include "host/render/FrameJob.h"
#include "host/render/FrameList.h"
#include "host/render/Report.h"
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

std::vector<FrameOutcome> runWithProgress(const std::vector<std::int64_t>& frames,
                                          const std::vector<FrameWork>& workers,
                                          const ApplyOptions& options) {
    const bool silent = options.quiet || options.dryRun;
    const ProgressMode mode = silent ? ProgressMode::None : options.progress;
    const auto progress = Progress::make(mode, static_cast<int>(frames.size()), stderr);
    const auto frameEnded = [&](const FrameOutcome& outcome) {
        progress->frameEnded(outcome);
        // Without --keep-going the run ends with the error, which is then the program's.
        const bool failed = outcome.status == FrameOutcome::Failed;
        if (failed && options.keepGoing) progress->reportFailure(outcome);
    };
    RunRules rules;
    rules.keepGoing = options.keepGoing;
    rules.shouldStop = &StopSignal::requested;
    auto outcomes = runFrames(frames, workers, rules, frameEnded, [&] { progress->tick(); });
    if (firstFailure(outcomes) && !options.keepGoing)
        progress->abandon();
    else
        progress->finish();
    return outcomes;
}

/// The report may be written over an older one, but not over a picture.
void checkReportPath(const std::string& report, const std::vector<std::int64_t>& frames,
                     const media::MediaSource& source, const media::MediaSink& sink) {
    namespace fs = std::filesystem;
    std::error_code ignored;  // a path that leads nowhere is no picture
    const fs::path reportPath = fs::weakly_canonical(report, ignored);
    const auto isReport = [&](const std::string& path) {
        return fs::weakly_canonical(path, ignored) == reportPath;
    };
    for (std::int64_t frame : source.frames())
        if (isReport(source.path(frame)))
            throw UsageError("--report: " + report + " is an input; name another file");
    for (std::int64_t frame : frames)
        if (isReport(sink.path(frame)))
            throw UsageError("--report: " + report + " is an output; name another file");
}

void printPlan(const std::vector<FrameOutcome>& outcomes, const media::MediaSource& source,
               const media::MediaSink& sink) {
    for (const FrameOutcome& outcome : outcomes)
        if (outcome.status == FrameOutcome::Finished)
            std::printf("%s -> %s\n", source.path(outcome.frame).c_str(),
                        sink.path(outcome.frame).c_str());
}

}  // namespace

ExitCode runApply(const ApplyOptions& options, const document::FilterCatalog& catalog) {
    document::setFilterChain(asQStrings(options.filters), catalog);
    const auto source = media::MediaSource::open(options.inputs);
    const std::vector<std::int64_t> frames = chosenFrames(options.frames, *source);
    media::WriteOptions writing;
    writing.video = options.video;
    const auto sink = media::MediaSink::open(options.output, *source, frames, writing);
    std::optional<Report> report;
    if (!options.report.empty()) {
        checkReportPath(options.report, frames, *source, *sink);
        if (!options.dryRun) report.emplace(options.report);
    }

    if (!options.quiet)
        for (const auto& warnings :
             {source->notices(), sink->notices(), warningsFor(*source, frames)})
            for (const std::string& warning : warnings)
                std::fprintf(stderr, "fxrender: warning: %s\n", warning.c_str());
    ObjectCounts objectCounts;
    const int count = workerCount(options.jobs, frames.size());
    const std::vector<FrameWork> workers =
        options.dryRun ? inspectingWorkers(count, *source)
                       : renderingWorkers(count, *source, *sink, objectCounts);
    const std::vector<FrameOutcome> outcomes = runWithProgress(frames, workers, options);
    const ExitCode code = exitCodeOf(outcomes, options.keepGoing);
    // A video is there only when the run came to its end.
    if (!options.dryRun && (code == Done || code == SomeFramesFailed)) sink->finish();
    if (report)
        report->write(
            outcomes, code, [&](std::int64_t frame) { return source->path(frame); },
            [&](std::int64_t frame) { return sink->path(frame); },
            [&](std::int64_t frame) { return objectCounts.of(frame); });
    const FrameOutcome* failure = firstFailure(outcomes);
    if (failure && !options.keepGoing) throw CommandError(failure->code, failure->error);
    if (options.dryRun) printPlan(outcomes, *source, *sink);
    return code;
}

}  // namespace render
