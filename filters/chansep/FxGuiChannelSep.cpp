#include "filters/chansep/FxGuiChannelSep.h"

#include "filters/chansep/ChannelSepParameters.h"
#include "framework/QtCompat.h"

namespace {

struct ChannelButton {
    QRadioButton* Ui::FxGuiChannelSepData::*button;
    Channel channel;
};

const ChannelButton kButtons[] = {
    {&Ui::FxGuiChannelSepData::theRBRed, RedChannel},
    {&Ui::FxGuiChannelSepData::theRBGreen, GreenChannel},
    {&Ui::FxGuiChannelSepData::theRBBlue, BlueChannel},
    {&Ui::FxGuiChannelSepData::theRBHue, HueChannel},
    {&Ui::FxGuiChannelSepData::theRBSaturation, SaturationChannel},
    {&Ui::FxGuiChannelSepData::theRBLightness, LightnessChannel},
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
    out.set("Channel", channel);
    out.set("Invert", ui.theChBInvert->isChecked());
}

void FxGuiChannelSep::showValues(const ParameterValues& values) {
    const SignalsBlocked blocked(ui.theBGButtons);
    const int channel = values.toInt(ChannelParameter);
    for (const ChannelButton& row : kButtons)
        if (row.channel == channel) (ui.*row.button)->setChecked(true);
    ui.theChBInvert->setChecked(values.toBool(InvertParameter));
}

std::vector<FxControlPage::ChangeSignal> FxGuiChannelSep::changeSignals() const {
    return {{ui.theBGButtons, SIGNAL(clicked(int))}};
}
