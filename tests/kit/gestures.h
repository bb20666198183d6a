#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QSlider>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTest>

/// Where a slider's handle is for a value.
inline QPoint handleAt(const QSlider& slider, int value) {
    QStyleOptionSlider option;
    option.initFrom(&slider);
    option.subControls = QStyle::SC_All;
    option.orientation = slider.orientation();
    option.minimum = slider.minimum();
    option.maximum = slider.maximum();
    option.tickPosition = slider.tickPosition();
    option.sliderPosition = option.sliderValue = value;
    return slider.style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
        .center();
}

/// Moves the mouse over the widget with its left button down.
inline void dragTo(QWidget& widget, QPoint place) {
    QMouseEvent move(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&widget, &move);
    QApplication::processEvents();
}

/// Presses the left button at one place, moves to the other by way of so many, and releases it.
inline void drag(QWidget& widget, QPoint from, QPoint to, int places = 1) {
    QTest::mousePress(&widget, Qt::LeftButton, {}, from);
    for (int place = 1; place <= places; ++place)
        dragTo(widget, from + (to - from) * place / places);
    QTest::mouseRelease(&widget, Qt::LeftButton, {}, to);
}
