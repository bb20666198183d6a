#include "host/kernel/ParamValue.h"

#include <QLocale>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Differences of frames take up to 64 bits and those of values 32: their product needs more
// than 64.
__extension__ typedef unsigned __int128 UInt128;

quint64 distance(qint64 low, qint64 high) {
    return static_cast<quint64>(high) - static_cast<quint64>(low);
}

int interpolateInt(int from, quint64 elapsed, int to, quint64 length) {
    if (from > to) return interpolateInt(to, length - elapsed, from, length);
    const UInt128 rise = distance(from, to);
    const UInt128 step = (rise * elapsed + length / 2) / length;
    return static_cast<int>(static_cast<qint64>(from) + static_cast<qint64>(step));
}

double interpolateDouble(double from, quint64 elapsed, double to, quint64 length) {
    const double t = static_cast<double>(elapsed) / static_cast<double>(length);
    // Not from + (to - from) * t: the difference of two large doubles overflows.
    const double value = from * (1.0 - t) + to * t;
    return std::clamp(value, std::min(from, to), std::max(from, to));
}

std::optional<QVariant> toInt(const QVariant& value) {
    bool ok = false;
    const int type = value.userType();
    if (type == QMetaType::Double || type == QMetaType::Float) {
        const double rounded = std::floor(value.toDouble() + 0.5);
        if (!(rounded >= std::numeric_limits<int>::min() &&
              rounded <= std::numeric_limits<int>::max()))
            return std::nullopt;
        return QVariant(static_cast<int>(rounded));
    }
    const qlonglong number = value.toLongLong(&ok);
    if (!ok || number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        return std::nullopt;
    return QVariant(static_cast<int>(number));
}

std::optional<QVariant> toDouble(const QVariant& value) {
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok || !std::isfinite(number)) return std::nullopt;
    return QVariant(number);
}

std::optional<QVariant> toBool(const QVariant& value) {
    if (value.userType() == QMetaType::Bool) return value;
    if (value.userType() == QMetaType::QString) {
        const QString text = value.toString();
        if (text == QLatin1String("true") || text == QLatin1String("1")) return QVariant(true);
        if (text == QLatin1String("false") || text == QLatin1String("0")) return QVariant(false);
        return std::nullopt;
    }
    const auto number = toDouble(value);
    if (!number) return std::nullopt;
    return QVariant(number->toDouble() != 0.0);
}

}  // namespace

bool isParamType(QMetaType::Type type) {
    return type == QMetaType::Bool || type == QMetaType::Int || type == QMetaType::Double ||
           type == QMetaType::QString;
}

QVariant emptyParamValue(QMetaType::Type type) {
    switch (type) {
        case QMetaType::Bool:
            return false;
        case QMetaType::Int:
            return 0;
        case QMetaType::Double:
            return 0.0;
        default:
            return QString();
    }
}

std::optional<QVariant> convertParamValue(const QVariant& value, QMetaType::Type type) {
    if (!value.isValid()) return std::nullopt;
    switch (type) {
        case QMetaType::Bool:
            return toBool(value);
        case QMetaType::Int:
            return toInt(value);
        case QMetaType::Double:
            return toDouble(value);
        case QMetaType::QString:
            if (!value.canConvert<QString>()) return std::nullopt;
            return QVariant(value.toString());
        default:
            return std::nullopt;
    }
}

QString paramValueText(const QVariant& value) {
    if (value.userType() != QMetaType::Double) return value.toString();
    const double number = value.toDouble();
    if (number == 0.0 && std::signbit(number)) return QStringLiteral("-0");
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

QVariant interpolateParamValue(const QVariant& from, qint64 fromFrame, const QVariant& to,
                               qint64 toFrame, qint64 frame) {
    const quint64 elapsed = distance(fromFrame, frame);
    const quint64 length = distance(fromFrame, toFrame);
    switch (from.userType()) {
        case QMetaType::Int:
            return interpolateInt(from.toInt(), elapsed, to.toInt(), length);
        case QMetaType::Double:
            return interpolateDouble(from.toDouble(), elapsed, to.toDouble(), length);
        default:
            return from;
    }
}
