#pragma once

#include "framework/FxControlPage.h"
#include "ui_FxGuiAdaptTreshold.h"

/// Control page of the adaptive threshold.
class FxGuiAdaptTreshold : public FxControlPage {
    Q_OBJECT

public:
    explicit FxGuiAdaptTreshold(QWidget* parent);

    void store(ValueWriter& out) const override;
    void showValues(const ParameterValues& values) override;
    std::vector<ChangeSignal> changeSignals() const override;

private:
    Ui::FxGuiAdaptTresholdData ui;
};
