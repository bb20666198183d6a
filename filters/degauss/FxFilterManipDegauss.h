#pragma once

#include "framework/FxFilterManipulator.h"

/// Deconvolution: sharpens a frame by undoing a small Gaussian blur of its luma.
class FxFilterManipDegauss : public FxFilterManipulator {
    Q_OBJECT

public:
    explicit FxFilterManipDegauss(QObject* parent);

    HkImageFilter* createImageFilter(int objectId) override;

protected:
    FxControlPage* createPage(QWidget* parent) override;
};
