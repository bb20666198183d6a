#include "host/editor/Presets.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include "host/document/FilterError.h"
#include "host/media/MediaError.h"
#include "host/media/atomic_file.h"

namespace editor {

namespace {
const char kSuffix[] = ".fxpreset";
}

QString presetFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QStringLiteral("/presets");
}

std::vector<Preset> knownPresets() {
    std::vector<Preset> presets;
    for (const QFileInfo& info : QDir(presetFolder())
                                     .entryInfoList({QLatin1Char('*') + QLatin1String(kSuffix)},
                                                    QDir::Files, QDir::Name | QDir::IgnoreCase))
        presets.push_back({info.completeBaseName(), info.absoluteFilePath()});
    return presets;
}

std::vector<document::FilterSetup> readPreset(const QString& path,
                                              const document::FilterCatalog& catalog) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw media::MediaError(media::MediaErrorKind::MissingInput,
                                path.toStdString() + ": the preset cannot be read (" +
                                    file.errorString().toStdString() + "); check its permissions");
    const qint64 mostBytes = qint64{1} << 20;
    const QByteArray bytes = file.read(mostBytes + 1);
    if (bytes.size() > mostBytes)
        throw document::FilterError(path + QStringLiteral(": a preset has at most 1 MiB; save "
                                                          "fewer filters or keys in one"));
    QStringList texts;
    for (const QString& line : QString::fromUtf8(bytes).split(QLatin1Char('\n')))
        if (!line.trimmed().isEmpty() && !line.startsWith(QLatin1Char('#')))
            texts << line.trimmed();
    if (texts.isEmpty())
        throw document::FilterError(path + QStringLiteral(": the file names no filter; a preset is "
                                                          "a filter a line, as -f takes it"));
    return document::readFilterTexts(texts, catalog);
}

void writePreset(const QString& file, const QStringList& filterTexts) {
    QDir().mkpath(QFileInfo(file).absolutePath());
    const QString path =
        file.endsWith(QLatin1String(kSuffix)) ? file : file + QLatin1String(kSuffix);
    const QByteArray text = (filterTexts.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8();
    media::writeFileAtomically(QFile::encodeName(path).toStdString(),
                               std::vector<unsigned char>(text.begin(), text.end()));
}

}  // namespace editor
