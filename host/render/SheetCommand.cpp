#include "host/render/SheetCommand.h"

#include <algorithm>
#include <optional>

#include "host/document/ContactSheet.h"
#include "host/document/FilterChain.h"
#include "host/document/PictureImage.h"
#include "host/document/VariantRenderer.h"
#include "host/imaging/Areas.h"
#include "host/media/MediaSink.h"
#include "host/media/file_names.h"
#include "host/render/sheet_output.h"

namespace render {

namespace {

/// More than anybody compares by eye.

QStringList filtersOf(const SheetOptions& options) {
    if (!options.filters.empty()) return asQStrings(options.filters);
    QStringList filters;
    for (const QString& sweep : asQStrings(options.sweeps)) {
        const QString filter = document::filterOfSweep(sweep);
        if (!filters.contains(filter, Qt::CaseInsensitive)) filters.append(filter);
    }
    return filters;
}

std::int64_t frameOf(const SheetOptions& options, const media::MediaSource& source) {
    if (options.frame.empty()) return source.frames().front();
    bool isNumber = false;
    const std::int64_t frame = QString::fromStdString(options.frame).toLongLong(&isNumber);
    if (!isNumber)
        throw UsageError("--frame: \"" + options.frame +
                         "\" is no frame number; a sheet shows one frame");
    const std::vector<std::int64_t>& frames = source.frames();
    if (!std::binary_search(frames.begin(), frames.end(), frame))
        throw UsageError("--frame: the input has no frame " + options.frame + "; " +
                         (frames.size() == 1 ? "its only frame is " + std::to_string(frames.front())
                                             : "its frames are " + std::to_string(frames.front()) +
                                                   " to " + std::to_string(frames.back())));
    return frame;
}

/// The values that are tried, and how the sheet names them.
class Sweeps {
public:
    Sweeps(const std::vector<std::string>& texts, const document::FilterCatalog& catalog)
        : m_catalog(catalog), columns(sweep(texts[0])) {
        if (texts.size() > 2)
            throw UsageError("--over: a sheet has rows and columns; give it once or twice");
        if (texts.size() > 1) rows = sweep(texts[1]);
        const std::size_t pictures = columns.values.size() * (rows ? rows->values.size() : 1);
        if (pictures > kMostSheetPictures)
            throw UsageError("--over: these are " + std::to_string(pictures) +
                             " pictures; a sheet has room for " +
                             std::to_string(kMostSheetPictures) +
                             ", a fixed limit, give fewer values");
    }

    QStringList labels(const document::ParameterSweep& sweep) const {
        const int typeId = sweep.instance.typeId;
        QStringList labels;
        for (const QVariant& value : sweep.values)
            labels.append(document::parameterLabel(m_catalog, typeId, sweep.parameter) + " = " +
                          document::valueText(m_catalog, typeId, sweep.parameter, value));
        return labels;
    }

private:
    document::ParameterSweep sweep(const std::string& text) const {
        return document::sweepFromText(QString::fromStdString(text), m_catalog, kMostSheetPictures);
    }
    const document::FilterCatalog& m_catalog;

public:
    const document::ParameterSweep columns;
    std::optional<document::ParameterSweep> rows;
};

/// The sheet with the original and room for the variants.
document::ContactSheet emptySheet(const SheetOptions& options, const Sweeps& sweeps,
                                  const QImage& original, const std::string& name) {
    document::ContactSheet sheet;
    const int columns = static_cast<int>(sweeps.columns.values.size());
    const document::SheetPlan plan = sweeps.rows
                                         ? document::planSheet(columns, original.size(), columns)
                                         : document::planSheet(columns + 1, original.size());
    sheet.columns = plan.columns;
    sheet.box = plan.box;
    sheet.heading = QString::fromStdString(name);
    sheet.text = filtersOf(options).join(QStringLiteral("  →  ")) + '\n' +
                 document::scaleText(original.size(), plan.box);
    const document::SheetCell first = {document::scaledForSheet(original, plan.box).copy(),
                                       QStringLiteral("original"), QString()};
    if (sweeps.rows) {
        sheet.lead = first;
        sheet.columnHeadings = sweeps.labels(sweeps.columns);
        sheet.rowHeadings = sweeps.labels(*sweeps.rows);
    } else {
        sheet.cells.push_back(first);
    }
    return sheet;
}

document::SheetCell cellOf(const document::Variant& variant, const QString& title,
                           const QSize& box) {
    document::SheetCell cell;
    cell.title = title;
    if (!variant.picture) {
        cell.text = QString::fromStdString(variant.refusal);
        return cell;
    }
    // The sheet keeps what it shows, not the whole picture.
    cell.picture = document::scaledForSheet(document::imageOf(*variant.picture), box).copy();
    const int objects = variant.showsObjects ? countWhiteAreas(*variant.picture) : -1;
    if (objects >= 0)
        cell.text =
            objects == 1 ? QStringLiteral("1 object") : QStringLiteral("%1 objects").arg(objects);
    return cell;
}

}  // namespace

ExitCode runSheet(const SheetOptions& options, const document::FilterCatalog& catalog,
                  const Messages& messages) {
    document::setFilterChain(filtersOf(options), catalog);
    const Sweeps sweeps(options.sweeps, catalog);
    const auto source = media::MediaSource::open({options.input}, options.reading);
    const std::int64_t frame = frameOf(options, *source);
    const auto sink = media::MediaSink::open(options.output, *source, {frame});
    document::VariantRenderer renderer(sweeps.columns, sweeps.rows);

    std::string name = media::shown(media::fileNameOf(source->path(frame)));
    if (source->frames().size() > 1) name += ", frame " + std::to_string(frame);
    media::PictureProperties properties;
    std::unique_ptr<HkImage> input = source->read(frame, &properties);
    if (!options.quiet)
        for (const std::string& note : properties.notes) messages.note(note);
    document::ContactSheet sheet = emptySheet(options, sweeps, document::imageOf(*input), name);
    const QStringList labels = sweeps.labels(sweeps.columns);
    int refused = 0;
    const auto take = [&](const document::Variant& variant) {
        sheet.cells.push_back(
            cellOf(variant, sweeps.rows ? QString() : labels[variant.column], sheet.box));
        if (variant.picture) return true;
        ++refused;
        if (!options.quiet)
            messages.warning((labels[variant.column] + ": ").toStdString() + variant.refusal);
        return true;
    };
    try {
        renderer.render(std::move(input), frame, take);
    } catch (const document::FrameRefused& refusal) {
        throw CommandError(InvalidData, source->path(frame) + ": " + refusal.what());
    }
    if (refused == static_cast<int>(sheet.cells.size()) - (sweeps.rows ? 0 : 1))
        throw CommandError(InvalidData, source->path(frame) + ": no value gives a picture; " +
                                            sheet.cells.back().text.toStdString());
    writeSheet(*sink, frame, sheet);
    sink->finish();
    return Done;
}

}  // namespace render
