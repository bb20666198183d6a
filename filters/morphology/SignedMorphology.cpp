#include "filters/morphology/SignedMorphology.h"

#include <QSlider>

ParameterTable signedMorphologyParameters() {
    return {{"Dilate", QMetaType::Int, ParamDescr::Interpolated, 0}};
}

void FxGuiSignedMorphology::store(ValueWriter& out) const {
    out.set("Dilate", m_amount->value());
}

void FxGuiSignedMorphology::showValues(const ParameterValues& values) {
    setQuietly(m_amount, values.toInt(AmountParameter));
}

std::vector<FxControlPage::ChangeSignal> FxGuiSignedMorphology::changeSignals() const {
    return {{m_amount, SIGNAL(valueChanged(int))}};
}
