#include "filters/chansep/FxGuiChannelSep.h"

#include "filters/chansep/ChannelSepParameters.h"
#include "framework/QtCompat.h"

using namespace ChannelSepParameters;

namespace {

struct ChannelButton {
    QRadioButton* Ui::FxGuiChannelSepData::*button;
    ChannelValue channel;
};

const ChannelButton kButtons[] = {
    {&Ui::FxGuiChannelSepData::theRBRed, Red},
    {&Ui::FxGuiChannelSepData::theRBGreen, Green},
    {&Ui::FxGuiChannelSepData::theRBBlue, Blue},
    {&Ui::FxGuiChannelSepData::theRBHue, Hue},
    {&Ui::FxGuiChannelSepData::theRBSaturation, Saturation},
    {&Ui::FxGuiChannelSepData::theRBLightness, Lightness},
};

}  // namespace

FxGuiChannelSep::FxGuiChannelSep(QWidget* parent) : FxControlPage(parent) {
    ui.setupUi(this);
}

void FxGuiChannelSep::store(ValueWriter& out) const {
    int channel = NoChannel;
    for (const ChannelButton& row : kButtons) {
        if (!(ui.*row.button)->isChecked()) continue;
        channel = row.channel;
        break;
    }
    out.set(Channel, channel);
    out.set(Invert, ui.theChBInvert->isChecked());
}

void FxGuiChannelSep::showValues(const ParameterValues& values) {
    const SignalsBlocked blocked(ui.theBGButtons);
    const int channel = values.toInt(Channel);
    for (const ChannelButton& row : kButtons)
        if (row.channel == channel) (ui.*row.button)->setChecked(true);
    ui.theChBInvert->setChecked(values.toBool(Invert));
}

std::vector<FxControlPage::ChangeSignal> FxGuiChannelSep::changeSignals() const {
    return {{ui.theBGButtons, SIGNAL(clicked(int))}};
}
