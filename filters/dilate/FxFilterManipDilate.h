#pragma once

#include "framework/FxFilterManipulator.h"

/// Dilate and erode: grows or shrinks bright areas.
class FxFilterManipDilate : public FxFilterManipulator {
    Q_OBJECT

public:
    explicit FxFilterManipDilate(QObject* parent);

    HkImageFilter* createImageFilter(int objectId) override;

protected:
    FxControlPage* createPage(QWidget* parent) override;
};
