#pragma once

#include <QString>
#include <QVector>

namespace document {

/// One value as it was written; without a frame when it holds for all of them.
struct ValueText {
    qint64 frame = 0;
    bool held = false;  ///< FRAME|=VALUE: kept until the next key
    QString text;
};

/// What one parameter is to be: one value, or keys in ascending order of their frames.
struct ParameterText {
    QString name;
    bool animated = false;
    QVector<ValueText> values;  ///< one when not animated, else at least one
};

/// A filter and its settings as a user writes them, taken apart but not yet checked against a
/// filter: "KEY" or "KEY:Name=VALUE,Name=VALUE..." where VALUE is one value or, over time, keys
/// such as "0=1;20|=5;40=9".
struct FilterText {
    QString key;
    QVector<ParameterText> parameters;  ///< as written
};

/// Takes a filter's text apart. Spaces around names, frames and values do not count.
/// Throws FilterError, naming the piece and what it should look like, when a name or value is
/// missing, a frame is no whole number or has two values.
FilterText parseFilterText(const QString& text);

}  // namespace document
