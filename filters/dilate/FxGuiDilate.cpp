#include "filters/dilate/FxGuiDilate.h"

FxGuiDilate::FxGuiDilate(QWidget* parent) : FxGuiSignedMorphology(parent) {
    ui.setupUi(this);
    m_amount = ui.theSlDilate;
}
