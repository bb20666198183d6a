#include "host/render/demo/Demo.h"

#include <QDir>
#include <QFileInfo>
#include <cstdio>

#include "host/document/ContactSheet.h"
#include "host/document/FilterChain.h"
#include "host/media/SamplePicture.h"
#include "host/render/FrameJob.h"
#include "host/render/Fxrender.h"
#include "host/render/PictureTaker.h"
#include "host/render/PluginSession.h"
#include "host/render/demo/Demonstrations.h"

namespace render {

namespace {

/// "Blur and enhance" as part of a file name: "blur-and-enhance".
QString fileNamePart(const QString& key) {
    QString name;
    for (const QChar letter : key.toLower())
        name += letter.isLetterOrNumber() ? letter : QChar('-');
    return name;
}

void save(const QImage& image, const QString& path) {
    if (!image.save(path, "PNG"))
        throw CommandError(CannotCreate,
                           path.toStdString() + ": cannot be written; name another folder");
}

/// Runs the sample through the filters, from file to file.
void renderSample(const QStringList& filters, const QString& sample, const QString& result,
                  const document::FilterCatalog& catalog) {
    document::setFilterChain(filters, catalog);
    const auto source = media::MediaSource::open({QFile::encodeName(sample).toStdString()});
    const auto sink =
        media::MediaSink::open(QFile::encodeName(result).toStdString(), *source, source->frames());
    PictureTaker pictures(*sink, PictureTaker::Facts::Ignored);
    const auto workers = renderingWorkers(1, RenderRequest{*source, source->frames(), pictures});
    const auto outcomes = runFrames(source->frames(), workers, RunRules(), nullptr, nullptr);
    const FrameOutcome& outcome = outcomes.front();
    if (outcome.status != FrameOutcome::Finished) throw CommandError(outcome.code, outcome.error);
    sink->finish();
}

int demonstrate(const QString& folderName) {
    const PluginSession session{std::string()};
    const QDir folder(folderName);
    if (!folder.mkpath(QStringLiteral(".")))
        throw CommandError(CannotCreate,
                           folderName.toStdString() + ": the folder cannot be made; name another");
    const QString sample = folder.filePath(QStringLiteral("sample.png"));
    save(media::samplePicture(), sample);

    const QImage picture(sample);
    document::ContactSheet sheet;
    sheet.heading = QStringLiteral("Every filter on one sample picture");
    sheet.columns = 4;
    sheet.box = QSize(400, 300);
    sheet.cells = {
        {picture, QStringLiteral("Sample"), QStringLiteral("the picture all others are made from")},
        {picture.copy(sampleDetail()), QStringLiteral("Sample"), QStringLiteral("a detail of it")}};
    int number = 0;
    for (const QString& key : session.catalog().keys()) {
        for (const Demonstration& demonstration : demonstrationsOf(key)) {
            const QString result = folder.filePath(QStringLiteral("%1-%2.png")
                                                       .arg(++number, 2, 10, QChar('0'))
                                                       .arg(fileNamePart(key)));
            renderSample(demonstration.filters, sample, result, session.catalog());
            const QImage shown = QImage(result).copy(demonstration.detail);
            sheet.cells.push_back({shown, key + ": " + demonstration.about,
                                   demonstration.filters.join(QString::fromUtf8("  \u2192  "))});
        }
    }
    const QString sheetFile = folder.filePath(QStringLiteral("contact-sheet.png"));
    save(document::drawContactSheet(sheet), sheetFile);
    std::printf("%d results and the sample: %s\ncontact sheet:            %s\n", number,
                qPrintable(folder.absolutePath()),
                qPrintable(QFileInfo(sheetFile).absoluteFilePath()));
    return Done;
}

}  // namespace

int runFxdemo(const std::vector<std::string>& arguments) {
    return reportErrors(Messages("fxdemo"), [&arguments](Messages&) -> int {
        const std::string folder = arguments.empty() ? "out" : arguments.front();
        if (arguments.size() > 1 || folder.empty() || folder.front() == '-')
            throw UsageError("fxdemo takes one argument: the folder to write to");
        return demonstrate(QFile::decodeName(folder.c_str()));
    });
}

}  // namespace render
