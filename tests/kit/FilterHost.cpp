#include "tests/kit/FilterHost.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QLibrary>
#include <stdexcept>
#include <string>

#include "host/kernel/KernelStore.h"

HkFilterManipulatorPluginInterface& plugin() {
    const auto instance = reinterpret_cast<QObject* (*)()>(
        QLibrary::resolve(QStringLiteral(FX_PLUGIN_FILE), "qt_plugin_instance"));
    auto* root = instance ? qobject_cast<HkFilterManipulatorPluginInterface*>(instance()) : nullptr;
    if (!root) throw std::runtime_error(FX_PLUGIN_FILE " is not the library that was built");
    return *root;
}

std::unique_ptr<HkFilterManipulator> makeManipulator(const char* key) {
    HkFilterManipulator* manipulator = nullptr;
    if (!plugin().create(QString::fromLatin1(key), manipulator, nullptr) || !manipulator)
        throw std::runtime_error(std::string("the library has no filter ") + key);
    return std::unique_ptr<HkFilterManipulator>(manipulator);
}

FilterHost::FilterHost(const char* key)
    : manipulator(makeManipulator(key)), typeId(KernelStore::filterTypeOf(*manipulator)) {
    KernelStore::instance().setCurrentFrame(0);
    manipulator->setUndoStack(&undo);
    manipulator->initManipulator(&toolBox);
    objectId = manipulator->addFilter();
    static_cast<void>(entry());  // as a window asks for it
    undo.clear();
}

QWidget& FilterHost::control(const char* name) {
    const QString wanted = QString::fromLatin1(name);
    for (QWidget* widget : page().findChildren<QWidget*>()) {
        const auto* button = qobject_cast<QAbstractButton*>(widget);
        if ((button ? button->text() : widget->objectName()) == wanted) return *widget;
    }
    throw std::runtime_error(std::string("the page has no ") + name);
}

void FilterHost::edit(const char* name, int position) {
    QWidget& widget = control(name);
    if (auto* slider = qobject_cast<QAbstractSlider*>(&widget))
        slider->setValue(position);
    else
        dynamic_cast<QAbstractButton&>(widget).click();
}

void FilterHost::editUnnoticed(const char* name, int position) {
    const QList<QWidget*> widgets = page().findChildren<QWidget*>();
    for (QWidget* widget : widgets) widget->blockSignals(true);
    edit(name, position);
    for (QWidget* widget : widgets) widget->blockSignals(false);
}

int FilterHost::position(const char* name) {
    QWidget& widget = control(name);
    if (const auto* slider = qobject_cast<QAbstractSlider*>(&widget)) return slider->value();
    return dynamic_cast<QAbstractButton&>(widget).isChecked();
}

QVariant FilterHost::value(int parameter, qint64 frame) const {
    return HkFXKernelData::getInstance()
        ->getObject(typeId, objectId)
        ->getKeyframesAt(frame)
        .at(parameter)
        .getValue();
}

void FilterHost::set(int parameter, const QVariant& value) {
    if (!KernelStore::instance().setBaseValue(objectId, parameter, value))
        throw std::runtime_error("no such value for parameter " + std::to_string(parameter));
}

bool FilterHost::process(std::unique_ptr<HkImage>& image, qint64 frame) {
    const std::unique_ptr<HkImageFilter> filter(manipulator->createImageFilter(objectId));
    return ::process(*filter, image, frame);
}

bool process(HkImageFilter& filter, std::unique_ptr<HkImage>& image, qint64 frame) {
    HkImage* const result = filter.processImage(image.get(), frame);
    if (result == image.get()) return false;
    static_cast<void>(image.release());  // the filter deleted it
    image.reset(result);
    return true;
}

std::unique_ptr<HkImage> testImage(int width, int height, int channels) {
    auto image = std::make_unique<HkImage>(width, height, channels, nullptr, 4u);
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < width * channels; ++i) {
            const bool black = (i / channels / 4 + y / 4) % 3 == 0;
            image->data[y * image->step + i] =
                static_cast<unsigned char>(black ? 0 : (y * width * channels + i) * 37 + y);
        }
    return image;
}
