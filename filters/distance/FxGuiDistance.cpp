#include "filters/distance/FxGuiDistance.h"

#include "filters/distance/DistanceParameters.h"
#include "framework/QtCompat.h"

using namespace DistanceParameters;

FxGuiDistance::FxGuiDistance(QWidget* parent) : FxControlPage(parent) {
    ui.setupUi(this);
}

void FxGuiDistance::store(ValueWriter& out) const {
    out.set(Type, int(ui.theRbBorders->isChecked() ? BordersOnly : FilledAreas));
    out.set(Det, ui.theSlDetails->value());
}

void FxGuiDistance::showValues(const ParameterValues& values) {
    const SignalsBlocked filledBlocked(ui.theRbFilled);
    const SignalsBlocked bordersBlocked(ui.theRbBorders);
    // An exclusive group does not let its checked button be unchecked: the one to show is checked.
    const bool borders = (values.toInt(Type) & BordersOnly) != 0;
    ui.theRbFilled->setChecked(!borders);
    ui.theRbBorders->setChecked(borders);
    setQuietly(ui.theSlDetails, values.toInt(Det));
}

std::vector<FxControlPage::ChangeSignal> FxGuiDistance::changeSignals() const {
    return {{ui.theBGButtons, SIGNAL(clicked(int))}, {ui.theSlDetails, SIGNAL(valueChanged(int))}};
}
