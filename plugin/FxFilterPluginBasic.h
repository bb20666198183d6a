#pragma once

#include <QObject>

#include "framework/contract/FxKernelApi/HkFilterManipulatorPluginInterface.h"

/// Root object of the library: lists the filters and makes their manipulators.
class FxFilterPluginBasic : public QObject, public HkFilterManipulatorPluginInterface {
    Q_OBJECT
    Q_INTERFACES(HkFilterManipulatorPluginInterface)
#if QT_VERSION >= 0x050000
    // Brings qt_plugin_instance() with its guarded pointer, and what QPluginLoader looks for.
    Q_PLUGIN_METADATA(IID "com.Quellophanica.plugin.FilterManipulatorPluginInterface/1.0")
#endif

public:
    QStringList keys() override;
    bool create(const QString& key, HkFilterManipulator*& manipulator, QObject* parent) override;
};
