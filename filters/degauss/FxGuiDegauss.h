#pragma once

#include "framework/FxControlPage.h"
#include "ui_FxGuiDegauss.h"

/// Control page of deconvolution.
class FxGuiDegauss : public FxControlPage {
    Q_OBJECT

public:
    explicit FxGuiDegauss(QWidget* parent);

    void store(ValueWriter& out) const override;
    void showValues(const ParameterValues& values) override;
    std::vector<ChangeSignal> changeSignals() const override;

private:
    Ui::FxGuiDegaussData ui;
};
