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

QStringList renderArguments(const std::vector<std::string>& inputs, const QStringList& filterTexts,
                            const QString& output) {
    QStringList arguments = {QStringLiteral("apply")};
    for (const std::string& input : inputs) arguments << QFile::decodeName(input.c_str());
    arguments << QStringLiteral("-o") << output;
    for (const QString& text : filterTexts) arguments << QStringLiteral("-f") << text;
    return arguments;
}

QString commandText(const std::vector<std::string>& inputs, const QStringList& filterTexts) {
    QStringList words = {QStringLiteral("fxrender")};
    for (const QString& argument : renderArguments(inputs, filterTexts, QStringLiteral("OUTPUT")))
        words << quoted(argument);
    return words.join(QLatin1Char(' '));
}

}  // namespace editor
