#pragma once

#include "framework/FxControlPage.h"
#include "ui_FxGuiDistance.h"

/// Control page of the object separator.
class FxGuiDistance : public FxControlPage {
    Q_OBJECT

public:
    explicit FxGuiDistance(QWidget* parent);

    void store(ValueWriter& out) const override;
    void showValues(const ParameterValues& values) override;
    std::vector<ChangeSignal> changeSignals() const override;

private:
    Ui::FxGuiDistanceData ui;
};
