#include "host/render/ApplyCommand.h"

#include <cstdio>
#include <optional>

#include "host/media/MediaSink.h"
#include "host/media/file_names.h"
#include "host/render/FileClaims.h"
#include "host/render/FrameJob.h"
#include "host/render/FrameRun.h"
#include "host/render/PictureTaker.h"
#include "host/render/Report.h"
#include "host/render/ResultFile.h"

namespace render {

namespace {

void printPlan(const ChosenFrames& chosen, const media::MediaSink& sink,
               const std::vector<FrameOutcome>& outcomes) {
    for (const FrameOutcome& outcome : outcomes)
        if (outcome.status == FrameOutcome::Finished)
            std::printf("%s -> %s\n", media::shown(chosen.source->path(outcome.frame)).c_str(),
                        media::shown(sink.path(outcome.frame)).c_str());
}

ExitCode rehearse(const ChosenFrames& chosen, const media::MediaSink& sink, RunOptions options) {
    options.progress = ProgressMode::None;
    const RunResult result = runChosen(
        chosen, options, [&](int count) { return inspectingWorkers(count, *chosen.source); });
    result.throwEnding();
    printPlan(chosen, sink, result.outcomes);
    return result.exitCode;
}

std::optional<ResultFile> openReport(const std::string& path, const ChosenFrames& chosen,
                                     const media::MediaSink& sink) {
    if (path.empty()) return {};
    const std::vector<std::string> outputFolder = {
        media::folderOf(sink.path(chosen.frames.front()))};
    FileClaims claims(*chosen.source);
    claims.claim(sink, chosen.frames, "an output");
    if (path != "-") claims.claim(path, "the report");
    return std::optional<ResultFile>(std::in_place, "--report", path, kReportBeginning,
                                     outputFolder);
}

void writeReport(const ResultFile& report, const RunResult& result, const ChosenFrames& chosen,
                 const media::MediaSink& sink, const PictureTaker& pictures,
                 const Messages& messages) {
    try {
        report.write(reportText(
            result.outcomes, result.exitCode,
            [&](std::int64_t frame) { return chosen.source->path(frame); },
            [&](std::int64_t frame) { return sink.path(frame); },
            [&](std::int64_t frame) { return pictures.objectsOf(frame); }));
    } catch (const std::exception& error) {
        if (!result.ending) throw;
        messages.warning(error.what());  // what ended the run is the worse news
    }
}

}  // namespace

ExitCode runApply(const ApplyOptions& options, const document::FilterCatalog& catalog,
                  const Messages& messages) {
    const ChosenFrames chosen = chooseFrames(options, catalog);
    const auto sink =
        media::MediaSink::open(options.output, *chosen.source, chosen.frames, options.writing);
    const std::optional<ResultFile> report = openReport(options.report, chosen, *sink);
    warnBeforehand(chosen, options, messages);
    if (!options.quiet)
        for (const std::string& notice : sink->notices()) messages.warning(notice);
    if (options.dryRun) return rehearse(chosen, *sink, options);

    PictureTaker pictures(*sink,
                          report ? PictureTaker::Objects::Counted : PictureTaker::Objects::Ignored);
    const RunResult result = renderChosen(chosen, options, pictures, messages);
    if (result.isWhole()) sink->finish();
    if (report) writeReport(*report, result, chosen, *sink, pictures, messages);
    result.throwEnding();
    return result.exitCode;
}

}  // namespace render
