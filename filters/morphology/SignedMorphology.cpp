#include "filters/morphology/SignedMorphology.h"

#include <QSlider>

ParameterTable SignedMorphologyParameters::table() {
    return {{Amount, "Dilate", QMetaType::Int, ParamDescr::Interpolated, 0}};
}

void FxGuiSignedMorphology::store(ValueWriter& out) const {
    out.set(SignedMorphologyParameters::Amount, m_amount->value());
}

void FxGuiSignedMorphology::showValues(const ParameterValues& values) {
    setQuietly(m_amount, values.toInt(SignedMorphologyParameters::Amount));
}

std::vector<FxControlPage::ChangeSignal> FxGuiSignedMorphology::changeSignals() const {
    return {{m_amount, SIGNAL(valueChanged(int))}};
}
