#pragma once

#include "filters/morphology/SignedMorphology.h"
#include "ui_FxGuiDilate.h"

/// Control page of dilate/erode.
class FxGuiDilate : public FxGuiSignedMorphology {
    Q_OBJECT

public:
    explicit FxGuiDilate(QWidget* parent);

private:
    Ui::FxGuiDilateData ui;
};
