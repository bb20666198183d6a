#include "host/document/FilterText.h"

#include <QStringList>
#include <algorithm>

#include "host/document/FilterError.h"

namespace document {

namespace {

/// FRAME=VALUE or FRAME|=VALUE.
ValueText parseKey(const QString& text, const QString& where) {
    const auto equals = text.indexOf('=');
    if (equals < 0)
        throw FilterError(QStringLiteral("%1: \"%2\" is no key; write FRAME=VALUE or FRAME|=VALUE")
                              .arg(where, text.trimmed()));
    ValueText key;
    key.held = equals > 0 && text.at(equals - 1) == '|';
    const QString frame = text.left(key.held ? equals - 1 : equals).trimmed();
    bool isNumber = false;
    key.frame = frame.toLongLong(&isNumber);
    if (!isNumber)
        throw FilterError(
            QStringLiteral("%1: \"%2\" is no frame number; keys are written FRAME=VALUE")
                .arg(where, frame));
    key.text = text.mid(equals + 1).trimmed();
    if (key.text.isEmpty())
        throw FilterError(QStringLiteral("%1: no value after \"%2\"").arg(where, text.trimmed()));
    return key;
}

QVector<ValueText> parseKeys(const QString& text, const QString& where) {
    QVector<ValueText> keys;
    for (const QString& part : text.split(';')) keys.append(parseKey(part, where));
    std::stable_sort(keys.begin(), keys.end(),
                     [](const ValueText& a, const ValueText& b) { return a.frame < b.frame; });
    const auto twice = std::adjacent_find(
        keys.cbegin(), keys.cend(),
        [](const ValueText& a, const ValueText& b) { return a.frame == b.frame; });
    if (twice != keys.cend())
        throw FilterError(
            QStringLiteral("%1: frame %2 has two values").arg(where).arg(twice->frame));
    return keys;
}

ParameterText parseParameter(const QString& text, const QString& filterKey) {
    const auto equals = text.indexOf('=');
    ParameterText parameter;
    parameter.name = text.left(equals).trimmed();  // all of it when there is no '='
    if (parameter.name.isEmpty())
        throw FilterError(QStringLiteral("%1: a parameter's name is missing in \"%2\"; "
                                         "write KEY:Name=VALUE,Name=VALUE")
                              .arg(filterKey, text.trimmed()));
    const QString where = filterKey + ": " + parameter.name;
    const QString value = equals < 0 ? QString() : text.mid(equals + 1).trimmed();
    if (value.isEmpty())
        throw FilterError(
            QStringLiteral("%1: no value; write %2=VALUE").arg(where, parameter.name));
    parameter.animated = value.contains('=') || value.contains(';');
    if (parameter.animated) {
        parameter.values = parseKeys(value, where);
    } else {
        ValueText single;
        single.text = value;
        parameter.values.append(single);
    }
    return parameter;
}

}  // namespace

FilterText parseFilterText(const QString& text) {
    const auto colon = text.indexOf(':');
    FilterText filter;
    filter.key = text.left(colon).trimmed();
    if (filter.key.isEmpty())
        throw FilterError(
            QStringLiteral("\"%1\" names no filter; write KEY or KEY:Name=VALUE").arg(text));
    if (colon < 0) return filter;

    for (const QString& part : text.mid(colon + 1).split(','))
        filter.parameters.append(parseParameter(part, filter.key));
    return filter;
}

}  // namespace document
