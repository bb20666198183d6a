#include "filters/blur/FxGuiBlur.h"

#include "filters/blur/BlurParameters.h"

using namespace BlurParameters;

FxGuiBlur::FxGuiBlur(QWidget* parent) : FxControlPage(parent) {
    ui.setupUi(this);
}

void FxGuiBlur::store(ValueWriter& out) const {
    out.set(Blur, ui.theSlBlur->value());
    out.set(Enhance, ui.theChbMaxFilter->isChecked());
}

void FxGuiBlur::showValues(const ParameterValues& values) {
    setQuietly(ui.theSlBlur, values.toInt(Blur));
    setQuietly(ui.theChbMaxFilter, values.toBool(Enhance));
}

std::vector<FxControlPage::ChangeSignal> FxGuiBlur::changeSignals() const {
    return {{ui.theSlBlur, SIGNAL(valueChanged(int))}, {ui.theChbMaxFilter, SIGNAL(toggled(bool))}};
}
