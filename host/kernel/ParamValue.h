#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>
#include <optional>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

// The values that parameters hold: Bool, Int, Double and QString.

/// True for the types that a parameter can have.
bool isParamType(QMetaType::Type type);

/// The value a parameter of this type has before anything was written: false, 0, 0.0 or "".
QVariant emptyParamValue(QMetaType::Type type);

/// `value` as a value of `type`. Nothing when it does not fit: text that is not a number, a number
/// outside the range of Int, a Double that is not finite, for Bool any text but true, false, 1, 0.
/// Fractions are rounded to the nearest Int.
FXKERNELAPI_EXPORT std::optional<QVariant> convertParamValue(const QVariant& value,
                                                             QMetaType::Type type);

/// The text from which convertParamValue makes exactly this value again, in any locale.
FXKERNELAPI_EXPORT QString paramValueText(const QVariant& value);

/// The value at `frame` on the straight line from `from` at `fromFrame` to `to` at `toFrame`, where
/// fromFrame < frame < toFrame. Int is rounded to nearest, halves upwards; Double stays between the
/// two values. Bool and QString have nothing between two values and keep `from`.
QVariant interpolateParamValue(const QVariant& from, qint64 fromFrame, const QVariant& to,
                               qint64 toFrame, qint64 frame);
