#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// One declared parameter of a filter type.
struct FXKERNELAPI_EXPORT ParamDescr {
    /// How a parameter's value runs between keyframes. Before the first and after the last one the
    /// value is held.
    enum KeyframeType {
        Interpolated = 0,  ///< linear from one keyframe to the next, rounded for integers
        Stepped = 1,       ///< held until the next keyframe
        Constant = 2       ///< one value for all frames
    };

    QString name;
    QMetaType::Type type = QMetaType::Type(0);  ///< none
    KeyframeType kind = Constant;
    QVariant defaultValue;
};
