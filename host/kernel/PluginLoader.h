#pragma once

#include <QString>
#include <memory>
#include <vector>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

class HkCvEditor;
class HkFilterManipulator;
class QToolBox;
class QUndoStack;

/// What a host hands to every manipulator. All may be null; a host without windows has no tool box.
struct PluginServices {
    QUndoStack* undoStack = nullptr;
    HkCvEditor* cvEditor = nullptr;
    QToolBox* toolBox = nullptr;
};

/// Loads plug-in libraries and owns the manipulators they make. The services must outlive it.
class FXKERNELAPI_EXPORT PluginLoader {
public:
    explicit PluginLoader(const PluginServices& services);
    /// Destroys the manipulators, and with them their types and instances. The libraries stay in
    /// memory: their code may still be referred to.
    ~PluginLoader();
    PluginLoader(const PluginLoader&) = delete;
    PluginLoader& operator=(const PluginLoader&) = delete;

    /// The plug-in that belongs to this program, which may be missing: libBasicFiltersPlugin.so in
    /// the folder plugins beside the program's own folder, or where installing has put it.
    static QString ownPlugin();

    /// Loads all filters of one library, or none. Steps, in this order: find the file, load it,
    /// compare its verification text, make its root object, cast that to the plug-in interface, ask
    /// for the filter keys, make the manipulator of each key, let each register itself.
    ///
    /// False when a step fails; `error` then holds one line that names the file, the step, the
    /// reason and what to do. Throws std::bad_alloc when memory runs out meanwhile. Nothing of the
    /// library is left behind then, and others can be loaded.
    bool load(const QString& file, QString* error = nullptr);

    /// The manipulators loaded so far, in the order of their libraries and keys.
    std::vector<HkFilterManipulator*> manipulators() const;

private:
    PluginServices m_services;
    std::vector<std::unique_ptr<HkFilterManipulator>> m_manipulators;
};
