#include "host/render/ApplyCommand.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>

#include "host/document/ChainRenderer.h"
#include "host/media/MediaError.h"
#include "host/media/MediaSink.h"
#include "host/media/file_names.h"
#include "host/render/CountPlot.h"
#include "host/render/FileClaims.h"
#include "host/render/FrameJob.h"
#include "host/render/FramePlan.h"
#include "host/render/FrameRun.h"
#include "host/render/MemoryLimit.h"
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
            "use fxrender count, which takes the white areas of any result for objects");
}

namespace fs = std::filesystem;

/// What the filters make of a picture of so many channels.
int channelsOfResult(std::int64_t frame, int channels) {
    const int side = 64, rowAlignment = 4;
    auto picture = std::make_unique<HkImage>(side, side, channels, nullptr, rowAlignment);
    if (!picture->data) return channels;
    std::fill_n(picture->data, static_cast<std::ptrdiff_t>(picture->step) * side,
                static_cast<unsigned char>(0));
    try {
        return document::ChainRenderer().render(std::move(picture), frame)->channels;
    } catch (const std::exception&) {
        return channels;  // refused for its size, perhaps
    }
}

/// The samples of all results: hardly any format makes more bytes of them.
std::int64_t mostOutputBytes(const ChosenFrames& chosen, const std::vector<std::int64_t>& frames) {
    std::map<int, int> channels;
    std::int64_t bytes = 0;
    for (const std::int64_t frame : frames) {
        const media::PictureInfo info = chosen.source->info(frame);
        const auto [known, isNew] = channels.emplace(info.channels, 0);
        if (isNew) known->second = channelsOfResult(frame, info.channels);
        bytes += std::int64_t{info.width} * info.height * known->second;
    }
    return bytes;
}

std::string freeSpaceText(const std::string& folder) {
    std::error_code error;
    fs::path nearest = fs::absolute(folder, error);
    while (!fs::exists(nearest, error) && nearest.has_relative_path())
        nearest = nearest.parent_path();
    const fs::space_info space = fs::space(nearest, error);
    return error ? "" : ", " + sizeText(static_cast<std::int64_t>(space.available)) + " are free";
}

void printPlan(const ChosenFrames& chosen, const media::MediaSink& sink, const FramePlan& plan,
               const std::vector<std::int64_t>& readable, const RunOptions& options) {
    for (const std::int64_t frame : readable)
        std::printf("%s -> %s\n", media::shown(chosen.source->path(frame)).c_str(),
                    media::shown(sink.path(frame)).c_str());
    for (const std::string& remark : plan.remarks)
        std::printf("%s\n", media::shown(remark).c_str());
    std::printf("%s to render\n", frameCountText(readable.size()).c_str());
    if (readable.empty()) return;
    const int jobs = jobsFor(options, readable.size());
    const MemoryEstimate memory = estimateMemory(*chosen.source, readable);
    std::printf("memory: about %s with %d %s (%s each)\n", sizeText(memory.total(jobs)).c_str(),
                jobs, jobs == 1 ? "job" : "jobs", sizeText(memory.bytesPerJob).c_str());
    std::printf("disk: at most about %s%s\n", sizeText(mostOutputBytes(chosen, readable)).c_str(),
                freeSpaceText(media::folderOf(sink.path(readable.front()))).c_str());
}

ExitCode rehearse(const ChosenFrames& chosen, const media::MediaSink& sink, const FramePlan& plan,
                  RunOptions options, const Messages& messages) {
    options.progress = ProgressMode::None;
    limitJobs(options, *chosen.source, plan.todo, messages);
    const RunResult result = runFrames(
        plan.todo, options, [&](int count) { return inspectingWorkers(count, *chosen.source); });
    result.throwEnding();
    std::vector<std::int64_t> readable;
    for (const FrameOutcome& outcome : result.outcomes)
        if (outcome.status == FrameOutcome::Finished) readable.push_back(outcome.frame);
    printPlan(chosen, sink, plan, readable, options);
    return result.exitCode;
}

/// A report, as JSON or as CSV by the suffix of its name.
class ReportFile {
public:
    ReportFile(const std::string& path, const ChosenFrames& chosen, const media::MediaSink& sink)
        : m_isTable(media::suffixOf(media::fileNameOf(path)) == ".csv"),
          m_file("--report", claimed(path, chosen, sink),
                 m_isTable ? kCsvReportBeginning : kJsonReportBeginning,
                 {media::folderOf(sink.path(chosen.frames.front()))}) {}

    void write(const std::vector<ReportRow>& rows, ExitCode exitCode) const {
        m_file.write(m_isTable ? csvReport(rows) : jsonReport(rows, exitCode));
    }

private:
    /// The path, which serves no other purpose.
    static const std::string& claimed(const std::string& path, const ChosenFrames& chosen,
                                      const media::MediaSink& sink) {
        FileClaims claims(*chosen.source);
        claims.claim(sink, chosen.frames, "an output");
        if (path != "-") claims.claim(path, "the report");
        return path;
    }

    const bool m_isTable;
    const ResultFile m_file;
};

std::vector<ReportRow> reportRows(const ChosenFrames& chosen, const media::MediaSink& sink,
                                  const FramePlan& plan, const RunResult& result,
                                  const PictureTaker& pictures, const document::ChainCheck& check) {
    std::map<std::int64_t, FrameOutcome> outcomes;
    for (const FrameOutcome& outcome : result.outcomes) outcomes[outcome.frame] = outcome;
    std::vector<ReportRow> rows;
    for (const std::int64_t frame : plan.mine) {
        ReportRow row;
        row.outcome = outcomes[frame];
        row.outcome.frame = frame;
        if (plan.upToDate.count(frame) > 0) row.outcome.status = FrameOutcome::UpToDate;
        row.input = chosen.source->path(frame);
        row.output = sink.path(frame);
        row.facts = pictures.factsOf(frame);
        row.warnings = check.objectionsAt(frame);
        row.warnings.insert(row.warnings.end(), row.facts.notes.begin(), row.facts.notes.end());
        rows.push_back(std::move(row));
    }
    return rows;
}

std::optional<ResultFile> openPlot(const std::string& path, const ChosenFrames& chosen,
                                   const media::MediaSink& sink) {
    if (path.empty()) return {};
    requireObjects(chosen);
    FileClaims claims(*chosen.source);
    claims.claim(sink, chosen.frames, "an output");
    claims.claim(path, "the plot");
    return std::optional<ResultFile>(
        std::in_place, "--plot", path, kCountPlotBeginning,
        std::vector<std::string>{media::folderOf(sink.path(chosen.frames.front()))});
}

/// Frames that failed, or that --resume has left alone, have no number.
std::vector<PlotPoint> pointsOf(const FramePlan& plan, const PictureTaker& pictures) {
    std::vector<PlotPoint> points;
    for (const std::int64_t frame : plan.mine)
        points.push_back({frame, pictures.factsOf(frame).objects.value_or(-1)});
    return points;
}

}  // namespace

ExitCode runApply(const ApplyOptions& options, const document::FilterCatalog& catalog,
                  const Messages& messages) {
    const ChosenFrames chosen = chooseFrames(options, catalog, messages);
    const auto sink =
        media::MediaSink::open(options.output, *chosen.source, chosen.frames, options.writing);
    // A project's output of one file is recorded nowhere: it is made whole or not at all.
    const bool hasOneFile = sink->writesInOrder();
    const bool mustBeRecorded = options.resume || options.shard.count > 1;
    std::optional<OutputBook> book;
    if (mustBeRecorded || (options.isRecorded() && !hasOneFile))
        book.emplace(
            *chosen.source, *sink, chosen.frames,
            OutputOrigin{options.plugin, chosen.range, std::to_string(options.writing.compression)},
            std::to_string(options.shard.index) + "-of-" + std::to_string(options.shard.count));
    std::optional<ReportFile> report;
    if (!options.report.empty()) report.emplace(options.report, chosen, *sink);
    const std::optional<ResultFile> plot = openPlot(options.plot, chosen, *sink);
    const FramePlan plan =
        planFrames(chosen.frames, options.shard, options.resume ? &*book : nullptr);
    document::ChainCheck check;
    if (!options.quiet || report) check = warnBeforehand(*chosen.source, plan.todo, messages);
    if (!options.quiet)
        for (const std::string& notice : sink->notices()) messages.warning(notice);
    if (options.dryRun) return rehearse(chosen, *sink, plan, options, messages);

    for (const std::string& remark : plan.remarks) messages.note(remark);
    PictureTaker pictures(
        *sink, report || plot ? PictureTaker::Facts::Gathered : PictureTaker::Facts::Ignored,
        book ? &*book : nullptr);
    const RunResult result = renderFrames(*chosen.source, plan.todo, options, pictures, messages);
    if (result.isWhole()) sink->finish();
    if (report) {
        try {
            report->write(reportRows(chosen, *sink, plan, result, pictures, check),
                          result.exitCode);
        } catch (const std::exception& error) {
            if (!result.ending) throw;
            messages.error(error.what(),
                           result.exitCode);  // what ended the run is worse: it follows
        }
    }
    result.throwEnding();
    if (plot) writeCountPlot(*plot, options.inputs, pointsOf(plan, pictures), messages);
    return result.exitCode;
}

}  // namespace render
