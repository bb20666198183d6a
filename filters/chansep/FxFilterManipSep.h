#pragma once

#include "framework/FxFilterManipulator.h"

/// Channel separation: one chosen channel of a colour frame as a grey frame.
class FxFilterManipSep : public FxFilterManipulator {
    Q_OBJECT

public:
    explicit FxFilterManipSep(QObject* parent);

    HkImageFilter* createImageFilter(int objectId) override;

protected:
    FxControlPage* createPage(QWidget* parent) override;
};
