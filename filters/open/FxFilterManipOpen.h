#pragma once

#include "framework/FxFilterManipulator.h"

/// Open and close: removes small bright or small dark detail.
class FxFilterManipOpen : public FxFilterManipulator {
    Q_OBJECT

public:
    explicit FxFilterManipOpen(QObject* parent);

    HkImageFilter* createImageFilter(int objectId) override;

protected:
    FxControlPage* createPage(QWidget* parent) override;
};
