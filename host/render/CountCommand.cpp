#include "host/render/CountCommand.h"

#include <cstdio>
#include <limits>
#include <memory>
#include <new>
#include <optional>

#include "host/imaging/Areas.h"
#include "host/media/MediaSink.h"
#include "host/media/file_names.h"
#include "host/render/CountPlot.h"
#include "host/render/FileClaims.h"
#include "host/render/FrameJob.h"
#include "host/render/FramePlan.h"
#include "host/render/FrameRun.h"
#include "host/render/ObjectTable.h"
#include "host/render/ResultFile.h"

namespace render {

namespace {

/// Where the numbers and pictures of a run go.
struct CountOutputs {
    std::unique_ptr<media::MediaSink> labels;    ///< null: not asked for
    std::unique_ptr<media::MediaSink> outlines;  ///< null: not asked for
    std::optional<ResultFile> table, plot;
};

CountOutputs openOutputs(const CountOptions& options, const ChosenFrames& chosen) {
    CountOutputs outputs;
    FileClaims claims(*chosen.source);
    std::vector<std::string> folders;
    const auto openPictures = [&](const std::string& name, media::SampleDepth depth,
                                  const char* purpose) {
        if (name.empty()) return std::unique_ptr<media::MediaSink>();
        media::WriteOptions writing;
        writing.depth = depth;
        auto sink = media::MediaSink::open(name, *chosen.source, chosen.frames, writing);
        if (options.shard.count > 1 && sink->writesInOrder())
            throw UsageError(media::shown(name) +
                             ": one file of many frames is made in one run; --shard needs a file "
                             "for each frame, such as frame_####.png");
        claims.claim(*sink, chosen.frames, purpose);
        folders.push_back(media::folderOf(sink->path(chosen.frames.front())));
        return sink;
    };
    outputs.labels = openPictures(options.labels, media::SampleDepth::Deep, "a label picture");
    outputs.outlines =
        openPictures(options.outlines, media::SampleDepth::Usual, "a picture of outlines");
    if (!options.table.empty()) {
        if (options.table != "-") claims.claim(options.table, "the table");
        outputs.table.emplace("--table", options.table, kObjectTableBeginning, folders);
    }
    if (!options.plot.empty()) {
        claims.claim(options.plot, "the plot");
        outputs.plot.emplace("--plot", options.plot, kCountPlotBeginning, folders);
    }
    return outputs;
}

/// Measures the objects of the results, and makes pictures of where they are.
class ObjectTaker : public ResultTaker {
public:
    ObjectTaker(const CountOptions& options, const media::MediaSource& source,
                CountOutputs& outputs, ObjectTable& table)
        : m_rules{options.fewestPixels, options.excludeBorder},
          m_source(source),
          m_outputs(outputs),
          m_table(table) {}

    FrameRest take(const RenderedFrame& rendered) override {
        AreaMap map;
        requireObjects(rendered.frame, mapAreas(rendered.image, m_rules, map));
        if (m_outputs.labels) writeLabels(rendered.frame, map);
        if (m_outputs.outlines) writeOutlines(rendered, map);
        m_table.add(rendered.frame, m_source.path(rendered.frame), std::move(map.areas),
                    map.leftOut);
        return {};
    }

    bool takesInOrder() const override {
        return m_outputs.outlines && m_outputs.outlines->writesInOrder();
    }

private:
    [[noreturn]] void fail(std::int64_t frame, const std::string& why) const {
        throw CommandError(InvalidData, m_source.path(frame) + ": " + why);
    }

    void requireObjects(std::int64_t frame, AreaStatus status) const {
        switch (status) {
            case AreaStatus::Success:
                return;
            case AreaStatus::NotOneChannel:
                fail(frame,
                     "the filters' result has colours or alpha, and objects are white on black; "
                     "separate a channel first, with -f \"Channel separation\"");
            case AreaStatus::NotBlackAndWhite:
                fail(frame,
                     "the filters' result is not black and white only, so where an object ends is "
                     "not known; end with a threshold, such as -f \"Adaptive threshold\"");
            case AreaStatus::NoMemory:
                throw std::bad_alloc();
        }
    }

    void writeLabels(std::int64_t frame, const AreaMap& map) const {
        const std::size_t most = std::numeric_limits<std::uint16_t>::max();
        if (map.areas.size() > most)
            fail(frame, std::to_string(map.areas.size()) +
                            " objects are more than a label picture has numbers for (" +
                            std::to_string(most) + "); leave --labels out or raise --min-area");
        m_outputs.labels->write(
            frame,
            media::DeepPicture{map.width, map.height, {map.labels.begin(), map.labels.end()}});
    }

    void writeOutlines(const RenderedFrame& rendered, const AreaMap& map) const {
        // The filters have worked in the picture's own memory: it is read again.
        const std::unique_ptr<HkImage> drawn = withOutlines(*m_source.read(rendered.frame), map);
        if (!drawn) throw std::bad_alloc();
        m_outputs.outlines->write(rendered.frame, *drawn, rendered.properties);
    }

    const AreaRules m_rules;
    const media::MediaSource& m_source;
    CountOutputs& m_outputs;
    ObjectTable& m_table;
};

}  // namespace

ExitCode runCount(const CountOptions& options, const document::FilterCatalog& catalog,
                  const Messages& messages) {
    const ChosenFrames chosen = chooseFrames(options, catalog, messages);
    CountOutputs outputs = openOutputs(options, chosen);
    const FramePlan plan = planFrames(chosen.frames, options.shard, nullptr);
    if (!options.quiet) warnBeforehand(*chosen.source, plan.mine, messages);
    for (const std::string& remark : plan.remarks) messages.note(remark);

    ObjectTable table;
    ObjectTaker taker(options, *chosen.source, outputs, table);
    const RunResult result = renderFrames(*chosen.source, plan.mine, options, taker, messages);
    if (outputs.outlines && result.isWhole()) outputs.outlines->finish();
    result.throwEnding();
    if (outputs.table) outputs.table->write(table.objects());
    if (outputs.plot) {
        std::vector<PlotPoint> points;
        for (const FrameOutcome& outcome : result.outcomes)
            points.push_back({outcome.frame, table.objectsOf(outcome.frame)});
        writeCountPlot(*outputs.plot, options.inputs, points, messages);
    }
    if (!outputs.table || !outputs.table->isStandardOutput())
        std::fputs(table.frames().c_str(), stdout);
    return result.exitCode;
}

}  // namespace render
