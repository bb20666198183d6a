#pragma once

#include <QStringList>
#include <QtPlugin>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

class HkFilterManipulator;
class QObject;

/// What a plug-in's root object offers.
class HkFilterManipulatorPluginInterface {
public:
    virtual ~HkFilterManipulatorPluginInterface() {}

    virtual QStringList keys() = 0;

    /// Makes the manipulator of a key, owned by the caller. True with a null manipulator when
    /// memory ran out; false with a null manipulator for an unknown key.
    virtual bool create(const QString& key, HkFilterManipulator*& manipulator, QObject* parent) = 0;
};

Q_DECLARE_INTERFACE(HkFilterManipulatorPluginInterface,
                    "com.Quellophanica.plugin.FilterManipulatorPluginInterface/1.0")
