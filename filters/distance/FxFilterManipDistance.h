#pragma once

#include "framework/FxFilterManipulator.h"

/// Object separator: splits touching white objects on black into separate regions.
class FxFilterManipDistance : public FxFilterManipulator {
    Q_OBJECT

public:
    explicit FxFilterManipDistance(QObject* parent);

    HkImageFilter* createImageFilter(int objectId) override;

protected:
    FxControlPage* createPage(QWidget* parent) override;
};
