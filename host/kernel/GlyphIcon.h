#pragma once

#include <QColor>
#include <QIcon>
#include <QPainterPath>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// A sign on a field of 16 x 16.
struct GlyphDrawing {
    QPainterPath lines;
    QPainterPath areas;
    double lineWidth = 1.4;
    QColor colour;  ///< none: the text colour of the application's palette
    enum { Never, WhenOn, WhenOnElseFaint } lit = Never;  ///< in the palette's highlight
    bool isFilledWhenLit = false;
};

/// The sign as an icon: it reads on light and dark backgrounds and at any size.
FXKERNELAPI_EXPORT QIcon glyphIcon(const GlyphDrawing& drawing);
