#pragma once

#include <QSlider>
#include <QString>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "host/editor/FileActions.h"
#include "host/editor/MainWindow.h"

/// A person at the editor: presses what is seen, waits until the picture is there.
class EditorDriver {
public:
    explicit EditorDriver(editor::MainWindow& driven) : window(driven) {}

    /// Until the newest picture is shown in full; false when none comes within a minute.
    bool settle();
    /// Presses "Add" on the filter's page of the tool box. Returns the new instance's object id.
    int addFilter(const QString& key);
    FxGuiImageFilter& entry(int objectId);
    /// A control of the instance's page: a slider by its object name, a button by its label.
    template <typename Control>
    Control& control(int objectId, const char* name) {
        Control* found = qobject_cast<Control*>(controlOf(objectId, name));
        if (!found) throw std::runtime_error(std::string("no such control: ") + name);
        return *found;
    }
    /// Takes hold of the slider's handle and moves it to a value, over so many points between.
    void dragSlider(QSlider& slider, int value, int points = 5);
    /// Where the handle of a slider, scrolled into view, is for a value.
    QPoint handleAt(QSlider& slider, int value);
    void click(QWidget& widget);
    void trigger(const char* action);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// A child of the window.
    template <typename Widget>
    Widget& child(const char* name) {
        Widget* found = window.findChild<Widget*>(QLatin1String(name));
        if (!found) throw std::runtime_error(std::string("no such widget: ") + name);
        return *found;
    }

    editor::MainWindow& window;

private:
    QWidget* controlOf(int objectId, const char* name);
};
