#include "tests/host/editor/EditorDriver.h"

#include <QAbstractButton>
#include <QAction>
#include <QPushButton>
#include <QScrollArea>
#include <QTest>
#include <QToolBox>
#include <stdexcept>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/kernel/KernelStore.h"
#include "tests/kit/gestures.h"

bool EditorDriver::settle() {
    QCoreApplication::processEvents();  // edits become requests when control returns
    const int minute = 60000;
    // A reduced picture only stands in for the one that follows the release of a drag.
    return QTest::qWaitFor(
        [this] { return window.preview().isIdle() && window.state().preview()->reduction == 1; },
        minute);
}

int EditorDriver::addFilter(const QString& key) {
    KernelStore& store = KernelStore::instance();
    const QString title = store.manipulator(store.typeOfKey(key))->filterTitle();
    QToolBox* toolBox = window.findChild<QToolBox*>();
    for (int page = 0; page < toolBox->count(); ++page) {
        if (toolBox->itemText(page) != title) continue;
        toolBox->setCurrentIndex(page);
        QCoreApplication::processEvents();
        click(*toolBox->widget(page)->findChild<QPushButton*>(QStringLiteral("thePbAdd")));
        settle();
        return store.instances().back().objectId;
    }
    throw std::runtime_error("the tool box has no page " + title.toStdString());
}

FxGuiImageFilter& EditorDriver::entry(int objectId) {
    KernelStore& store = KernelStore::instance();
    for (const InstanceId& id : store.instances())
        if (id.objectId == objectId) return *store.manipulator(id.typeId)->getFilterGui(objectId);
    throw std::runtime_error("no such instance");
}

QWidget* EditorDriver::controlOf(int objectId, const char* name) {
    FxGuiImageFilter& shown = entry(objectId);
    if (auto* named = shown.findChild<QWidget*>(QLatin1String(name))) return named;
    for (QAbstractButton* button : shown.findChildren<QAbstractButton*>())
        if (button->text() == QLatin1String(name)) return button;
    return nullptr;
}

QPoint EditorDriver::handleAt(QSlider& slider, int value) {
    window.findChild<QScrollArea*>(QStringLiteral("chainPanel"))->ensureWidgetVisible(&slider);
    return ::handleAt(slider, value);
}

void EditorDriver::dragSlider(QSlider& slider, int value, int points) {
    drag(slider, handleAt(slider, slider.value()), handleAt(slider, value), points);
}

void EditorDriver::click(QWidget& widget) {
    QTest::mouseClick(&widget, Qt::LeftButton, {}, widget.rect().center());
}

void EditorDriver::trigger(const char* action) {
    auto* found = window.findChild<QAction*>(QLatin1String(action));
    if (!found || !found->isEnabled())
        throw std::runtime_error(std::string("no such action, or it is off: ") + action);
    found->trigger();
}

void EditorDriver::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(&window, key, modifiers);
}
