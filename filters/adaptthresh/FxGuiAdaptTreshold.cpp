#include "filters/adaptthresh/FxGuiAdaptTreshold.h"

#include "filters/adaptthresh/AdaptTreshParameters.h"

using namespace AdaptTreshParameters;

namespace {

// Slider positions and values: sizes are odd, minima go in tenths.
int sizeOfPosition(int position) {
    return 2 * position + 1;
}
/// In 64 bits: a document may hold the least of all integers.
int positionOfSize(int size) {
    return static_cast<int>((qint64(size) - 1) / 2);
}
double minOfPosition(int position) {
    return position / 10.0;
}

/// Truncated; a stored value beyond the slider, or none at all, shows as the nearer end.
int positionOfMin(double min, const QSlider& slider) {
    const double position = min * 10.0;
    if (!(position > slider.minimum())) return slider.minimum();
    if (position > slider.maximum()) return slider.maximum();
    return static_cast<int>(position);
}

}  // namespace

FxGuiAdaptTreshold::FxGuiAdaptTreshold(QWidget* parent) : FxControlPage(parent) {
    ui.setupUi(this);
}

void FxGuiAdaptTreshold::store(ValueWriter& out) const {
    out.set(Size, sizeOfPosition(ui.theSlSize->value()));
    out.set(Min, minOfPosition(ui.theSlMin->value()));
}

void FxGuiAdaptTreshold::showValues(const ParameterValues& values) {
    setQuietly(ui.theSlSize, positionOfSize(values.toInt(Size)));
    setQuietly(ui.theSlMin, positionOfMin(values.toDouble(Min), *ui.theSlMin));
}

std::vector<FxControlPage::ChangeSignal> FxGuiAdaptTreshold::changeSignals() const {
    return {{ui.theSlSize, SIGNAL(valueChanged(int))}, {ui.theSlMin, SIGNAL(valueChanged(int))}};
}
