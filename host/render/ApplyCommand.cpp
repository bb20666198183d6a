#include "host/render/ApplyCommand.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "host/document/ChainRenderer.h"
#include "host/media/MediaSink.h"
#include "host/media/file_names.h"
#include "host/render/CountPlot.h"
#include "host/render/FileClaims.h"
#include "host/render/FrameJob.h"
#include "host/render/FrameRun.h"
#include "host/render/PictureTaker.h"
#include "host/render/Report.h"
#include "host/render/ResultFile.h"

namespace render {

namespace {

/// A plot of nothing helps nobody, least of all after a long run.
void requireObjects(const ChosenFrames& chosen) {
    const document::ChainRenderer chain;
    const auto showsObjects = [&chain](std::int64_t frame) { return chain.showsObjects(frame); };
    if (std::none_of(chosen.frames.begin(), chosen.frames.end(), showsObjects))
        throw UsageError(
            "--plot: the filters' result shows no objects; end with -f \"Object separator\", or "
            "use "
            "fxrender count, which takes the white areas of any result for objects");
}

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

struct ResultFiles {
    std::optional<ResultFile> report, plot;
};

ResultFiles openResultFiles(const ApplyOptions& options, const ChosenFrames& chosen,
                            const media::MediaSink& sink) {
    const std::vector<std::string> outputFolder = {
        media::folderOf(sink.path(chosen.frames.front()))};
    FileClaims claims(*chosen.source);
    claims.claim(sink, chosen.frames, "an output");
    ResultFiles files;
    if (!options.report.empty()) {
        if (options.report != "-") claims.claim(options.report, "the report");
        files.report.emplace("--report", options.report, kReportBeginning, outputFolder);
    }
    if (!options.plot.empty()) {
        requireObjects(chosen);
        claims.claim(options.plot, "the plot");
        files.plot.emplace("--plot", options.plot, kCountPlotBeginning, outputFolder);
    }
    return files;
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

std::vector<PlotPoint> pointsOf(const RunResult& result, const PictureTaker& pictures) {
    std::vector<PlotPoint> points;
    for (const FrameOutcome& outcome : result.outcomes)
        points.push_back({outcome.frame, pictures.objectsOf(outcome.frame).value_or(-1)});
    return points;
}

}  // namespace

ExitCode runApply(const ApplyOptions& options, const document::FilterCatalog& catalog,
                  const Messages& messages) {
    const ChosenFrames chosen = chooseFrames(options, catalog);
    const auto sink =
        media::MediaSink::open(options.output, *chosen.source, chosen.frames, options.writing);
    const ResultFiles files = openResultFiles(options, chosen, *sink);
    warnBeforehand(chosen, options, messages);
    if (options.dryRun) return rehearse(chosen, *sink, options);

    PictureTaker pictures(*sink, files.report || files.plot ? PictureTaker::Objects::Counted
                                                            : PictureTaker::Objects::Ignored);
    const RunResult result = renderChosen(chosen, options, pictures, messages);
    if (result.isWhole()) sink->finish();
    if (files.report) writeReport(*files.report, result, chosen, *sink, pictures, messages);
    result.throwEnding();
    if (files.plot)
        files.plot->write(countPlot(plotTitle(options.inputs), pointsOf(result, pictures)));
    return result.exitCode;
}

}  // namespace render
