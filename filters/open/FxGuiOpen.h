#pragma once

#include "filters/morphology/SignedMorphology.h"
#include "ui_FxGuiOpen.h"

/// Control page of open/close.
class FxGuiOpen : public FxGuiSignedMorphology {
    Q_OBJECT

public:
    explicit FxGuiOpen(QWidget* parent);

private:
    Ui::FxGuiOpenData ui;
};
