#pragma once

#include "framework/FxControlPage.h"
#include "ui_FxGuiChannelSep.h"

/// Control page of channel separation: a radio button per channel and "Invert".
class FxGuiChannelSep : public FxControlPage {
    Q_OBJECT

public:
    explicit FxGuiChannelSep(QWidget* parent);

    void store(ValueWriter& out) const override;
    void showValues(const ParameterValues& values) override;
    std::vector<ChangeSignal> changeSignals() const override;

private:
    Ui::FxGuiChannelSepData ui;
};
