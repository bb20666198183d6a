#pragma once

#include "framework/FxFilterManipulator.h"

/// Blur and enhance: smooths a frame, after an optional maximum filter that strengthens bright
/// detail.
class FxFilterManipBlur : public FxFilterManipulator {
    Q_OBJECT

public:
    explicit FxFilterManipBlur(QObject* parent);

    HkImageFilter* createImageFilter(int objectId) override;

protected:
    FxControlPage* createPage(QWidget* parent) override;
};
