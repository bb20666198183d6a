#pragma once

#include "framework/FxControlPage.h"
#include "ui_FxGuiBlur.h"

/// Control page of blur and enhance.
class FxGuiBlur : public FxControlPage {
    Q_OBJECT

public:
    explicit FxGuiBlur(QWidget* parent);

    void store(ValueWriter& out) const override;
    void showValues(const ParameterValues& values) override;
    std::vector<ChangeSignal> changeSignals() const override;

private:
    Ui::FxGuiBlurData ui;
};
