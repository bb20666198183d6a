#include "host/editor/CommandText.h"

#include <QFile>
#include <QRegularExpression>

namespace editor {

namespace {

QString quoted(const QString& argument) {
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_./:=,+@%-]+$"));
    if (plain.match(argument).hasMatch()) return argument;
    return QLatin1Char('\'') +
           QString(argument).replace(QLatin1String("'"), QLatin1String("'\\''")) +
           QLatin1Char('\'');
}

}  // namespace

QString commandText(const QString& foreignPlugin, const std::vector<std::string>& inputs,
                    const std::string& range, const QStringList& filterTexts) {
    QStringList words = {QStringLiteral("fxrender"), QStringLiteral("apply")};
    for (const std::string& input : inputs) words << quoted(QFile::decodeName(input.c_str()));
    words << QStringLiteral("-o") << QStringLiteral("OUTPUT");
    if (!range.empty()) words << QStringLiteral("--range") << quoted(QString::fromStdString(range));
    if (!foreignPlugin.isEmpty()) words << QStringLiteral("--plugin") << quoted(foreignPlugin);
    for (const QString& text : filterTexts) words << QStringLiteral("-f") << quoted(text);
    return words.join(QLatin1Char(' '));
}

}  // namespace editor
