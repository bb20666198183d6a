#include "filters/degauss/FxGuiDegauss.h"

#include "filters/degauss/DegaussParameters.h"
#include "framework/QtCompat.h"

using namespace DegaussParameters;

FxGuiDegauss::FxGuiDegauss(QWidget* parent) : FxControlPage(parent) {
    ui.setupUi(this);
}

void FxGuiDegauss::store(ValueWriter& out) const {
    out.set(Threshold, ui.theSlThresh->value());
    out.set(Method, int(ui.theRBMethodFFT->isChecked() ? FFT : LucyRichardson));
}

void FxGuiDegauss::showValues(const ParameterValues& values) {
    setQuietly(ui.theSlThresh, values.toInt(Threshold));
    // The radio buttons exclude one another: the one to check unchecks the other, with that one's
    // signals blocked too.
    const SignalsBlocked fftBlocked(ui.theRBMethodFFT);
    const SignalsBlocked lucyRichardsonBlocked(ui.theRBMethodLR);
    switch (values.toInt(Method)) {
        case FFT:
            ui.theRBMethodFFT->setChecked(true);
            break;
        case LucyRichardson:
            ui.theRBMethodLR->setChecked(true);
            break;
        default:
            break;
    }
}

std::vector<FxControlPage::ChangeSignal> FxGuiDegauss::changeSignals() const {
    return {{ui.theSlThresh, SIGNAL(valueChanged(int))}, {ui.theBGButtons, SIGNAL(clicked(int))}};
}
