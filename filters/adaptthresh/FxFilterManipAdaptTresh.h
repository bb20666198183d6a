#pragma once

#include "framework/FxFilterManipulator.h"

/// Adaptive threshold: white where a pixel stands out from its neighbourhood.
class FxFilterManipAdaptTresh : public FxFilterManipulator {
    Q_OBJECT

public:
    explicit FxFilterManipAdaptTresh(QObject* parent);

    HkImageFilter* createImageFilter(int objectId) override;

protected:
    FxControlPage* createPage(QWidget* parent) override;
};
