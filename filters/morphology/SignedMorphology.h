#pragma once

#include "framework/FxControlPage.h"
#include "framework/FxFilterManipulator.h"

class QSlider;

// What open/close and dilate/erode share: one parameter, whose sign selects the operation and whose
// magnitude is its size.

namespace SignedMorphologyParameters {

/// Index order = keyframe order; "Enabled" is 0.
enum Parameter { Amount = 1 };

/// The parameter is called "Dilate" by both filters; saved documents carry the name.
ParameterTable table();

}  // namespace SignedMorphologyParameters

/// A page whose only control is a slider for the signed amount.
class FxGuiSignedMorphology : public FxControlPage {
public:
    void store(ValueWriter& out) const override;
    void showValues(const ParameterValues& values) override;
    std::vector<ChangeSignal> changeSignals() const override;

protected:
    explicit FxGuiSignedMorphology(QWidget* parent) : FxControlPage(parent) {}

    QSlider* m_amount = nullptr;  ///< the form's slider, set by the page's constructor
};
