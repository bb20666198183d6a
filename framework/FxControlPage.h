#pragma once

#include <QWidget>
#include <vector>

#include "framework/ParameterTable.h"

class QAbstractButton;
class QAbstractSlider;

/// A filter's control page: maps widgets to values and back, nothing else. Its form lays it out.
class FxControlPage : public QWidget {
public:
    /// Writes the value of every control; never "Enabled", which the host's entry widget carries.
    virtual void store(ValueWriter& out) const = 0;

    /// Sets the controls without any change signal: showing a value is not an edit.
    virtual void showValues(const ParameterValues& values) = 0;

    /// A control and the signal by which it tells of an edit, as SIGNAL() spells it.
    struct ChangeSignal {
        QObject* control;
        const char* signal;
    };
    virtual std::vector<ChangeSignal> changeSignals() const = 0;

protected:
    explicit FxControlPage(QWidget* parent) : QWidget(parent) {}

    // Set a control with its signals blocked.
    static void setQuietly(QAbstractSlider* slider, int value);
    static void setQuietly(QAbstractButton* button, bool checked);
};
