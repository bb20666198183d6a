#pragma once

#include <QString>
#include <functional>
#include <stdexcept>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// A library that is not known to be sound can end the process it is loaded into: with exit() while
/// it is loaded, with a signal while a filter works. The program then runs in a child process, and
/// whoever started it is told what happened.

/// What the library did, and what to do about it: one line, without a full stop.
class FXKERNELAPI_EXPORT PluginEndedProgram : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The system grants no process for the library: one line, without a full stop.
class FXKERNELAPI_EXPORT NoPluginProcess : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How long a step of loading, or a PluginQuestion, may take, unless FX_PLUGIN_SECONDS in the
/// environment says otherwise.
constexpr int kUsualPluginSeconds = 30;

/// Starts this program anew, with the same arguments, as a child process, in which the same call
/// runs `program` and returns its number; here the call returns what the child ended with.
/// `program` must not throw. Signals that ask this process to stop go on to the child, which does
/// not outlive it. Throws PluginEndedProgram when the child ended by itself after `program` has
/// begun to load the library, or a step took too long; and NoPluginProcess.
/// To be called first of all in a program, which must do before it only what can be done twice.
FXKERNELAPI_EXPORT int runGuarded(const QString& pluginFile, const std::function<int()>& program);

/// For the loader: what the library is being asked to do from now on. Nothing happens in a process
/// that is not guarded.
void notePluginStep(const QString& step);
void notePluginLoaded();

/// For a host that knows what it is using the library for.
FXKERNELAPI_EXPORT void notePluginUse(const QString& use);

/// While one lives, the library, which is loaded, is asked something that it must answer soon.
class FXKERNELAPI_EXPORT PluginQuestion {
public:
    explicit PluginQuestion(const QString& question);
    ~PluginQuestion();
    PluginQuestion(const PluginQuestion&) = delete;
    PluginQuestion& operator=(const PluginQuestion&) = delete;
};
