#include "host/document/ParameterSweep.h"

#include <QRegularExpression>
#include <QStringList>
#include <cmath>

#include "host/document/FilterError.h"
#include "host/document/FilterSettings.h"
#include "host/document/FilterText.h"

namespace document {

namespace {

/// KEY or KEY#2.
struct InstanceName {
    QString key;
    int number = 1;
};

InstanceName instanceName(const QString& text) {
    static const QRegularExpression numbered(QStringLiteral("^(.*)#([1-9][0-9]{0,4})$"));
    const QRegularExpressionMatch match = numbered.match(text);
    if (!match.hasMatch()) return {text, 1};
    return {match.captured(1).trimmed(), match.captured(2).toInt()};
}

InstanceId instanceOf(const QString& text, const FilterCatalog& catalog) {
    const InstanceName name = instanceName(text);
    const int typeId = catalog.typeOf(name.key);
    std::vector<InstanceId> alike;
    for (const InstanceId& instance : KernelStore::instance().instances())
        if (instance.typeId == typeId) alike.push_back(instance);
    if (alike.empty())
        throw FilterError(QStringLiteral("%1 is none of the filters of the chain; add it with -f")
                              .arg(KernelStore::instance().filterKey(typeId)));
    if (name.number > static_cast<int>(alike.size()))
        throw FilterError(QStringLiteral("there is no \"%1\": the chain has %2 of this filter")
                              .arg(text)
                              .arg(alike.size()));
    return alike[static_cast<std::size_t>(name.number - 1)];
}

[[noreturn]] void refuseCount(const QString& where, int mostValues) {
    throw FilterError(
        QStringLiteral("%1: these are more than %2 values; give fewer, or a larger step")
            .arg(where)
            .arg(mostValues));
}

/// "1-13:4" as its numbers; any other text as it is.
QStringList expanded(const QString& text, const QString& where, int mostValues) {
    static const QRegularExpression range(
        QStringLiteral(R"(^(-?[0-9.]+)-(-?[0-9.]+)(?::([0-9.]+))?$)"));
    const QRegularExpressionMatch match = range.match(text);
    if (!match.hasMatch()) return {text};
    bool areNumbers[3] = {false, false, true};
    const double first = match.captured(1).toDouble(&areNumbers[0]);
    const double last = match.captured(2).toDouble(&areNumbers[1]);
    const double step =
        match.captured(3).isEmpty() ? 1 : match.captured(3).toDouble(&areNumbers[2]);
    if (!areNumbers[0] || !areNumbers[1] || !areNumbers[2] || step <= 0 || last < first)
        throw FilterError(QStringLiteral("%1: \"%2\" is no range; write FIRST-LAST or "
                                         "FIRST-LAST:STEP, such as 1-13:4")
                              .arg(where, text));
    // A last value that rounding puts a hair beyond the end is meant.
    const double count = std::floor((last - first) / step + 1e-9) + 1;
    if (count > mostValues) refuseCount(where, mostValues);
    QStringList numbers;
    for (int i = 0; i < static_cast<int>(count); ++i)
        numbers.append(QString::number(first + i * step, 'g', 12));
    return numbers;
}

}  // namespace

ParameterSweep sweepFromText(const QString& text, const FilterCatalog& catalog, int mostValues) {
    const auto colon = text.indexOf(':');
    const auto equals = text.indexOf('=', colon + 1);
    if (colon < 1 || equals < 0)
        throw FilterError(
            QStringLiteral("\"%1\" names no values to try; write KEY:Name=VALUE,VALUE or "
                           "KEY:Name=FIRST-LAST:STEP")
                .arg(text));
    const QString key = text.left(colon).trimmed();
    const QString name = text.mid(colon + 1, equals - colon - 1).trimmed();
    ParameterSweep sweep;
    sweep.instance = instanceOf(key, catalog);
    const int typeId = sweep.instance.typeId;
    sweep.parameter = catalog.parameterIndex(typeId, name);
    const QString where = key + QStringLiteral(": ") + name;
    for (const QString& part : text.mid(equals + 1).split(',')) {
        for (const QString& value : expanded(part.trimmed(), where, mostValues)) {
            if (value.isEmpty() || value.contains('=') || value.contains(';'))
                throw FilterError(
                    QStringLiteral("%1: \"%2\" is no value; separate values by commas, without "
                                   "keys")
                        .arg(where, value));
            if (static_cast<int>(sweep.values.size()) == mostValues) refuseCount(where, mostValues);
            ParameterText parameter;
            parameter.name = name;
            parameter.values.append(ValueText{0, false, value});
            FilterText filter;
            filter.key = KernelStore::instance().filterKey(typeId);
            filter.parameters.append(parameter);
            const InstanceState state = settingsFromText(filter, catalog);
            sweep.values.push_back(state.params.at(static_cast<std::size_t>(sweep.parameter)).base);
        }
    }
    return sweep;
}

QString filterOfSweep(const QString& text) {
    return instanceName(text.left(text.indexOf(':')).trimmed()).key;
}

QString parameterLabel(const FilterCatalog& catalog, int typeId, int parameter) {
    const QString& label = catalog.facts(typeId, parameter).label;
    return label.isEmpty() ? catalog.descriptor(typeId).param(parameter).name : label;
}

QString valueText(const FilterCatalog& catalog, int typeId, int parameter, const QVariant& value) {
    const HkKernelObjectDataDescr& descr = catalog.descriptor(typeId);
    const bool isSwitch = FilterCatalog::isSwitch(descr, parameter);
    if (isSwitch || descr.param(parameter).type == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    for (const ParameterChoice& choice : catalog.facts(typeId, parameter).choices)
        if (choice.value == value.toInt()) return choice.text;
    if (descr.param(parameter).type == QMetaType::Double)
        return QString::number(value.toDouble(), 'g', 12);
    return value.toString();
}

}  // namespace document
