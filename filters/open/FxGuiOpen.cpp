#include "filters/open/FxGuiOpen.h"

FxGuiOpen::FxGuiOpen(QWidget* parent) : FxGuiSignedMorphology(parent) {
    ui.setupUi(this);
    m_amount = ui.theSlOpen;
}
