#include "framework/FxControlPage.h"

#include <QAbstractButton>
#include <QAbstractSlider>

#include "framework/QtCompat.h"

void FxControlPage::setQuietly(QAbstractSlider* slider, int value) {
    const SignalsBlocked blocked(slider);
    slider->setValue(value);
}

void FxControlPage::setQuietly(QAbstractButton* button, bool checked) {
    const SignalsBlocked blocked(button);
    button->setChecked(checked);
}
