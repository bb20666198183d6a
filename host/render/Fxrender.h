#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/render/Messages.h"

namespace render {

/// Runs what a program is for, and turns what it throws, or results that are lost on standard
/// output, into one line on standard error and the exit code that belongs to it.
int reportErrors(Messages messages, const std::function<int(Messages&)>& work);

/// fxrender: results on standard output, messages on standard error, an ExitCode.
int runFxrender(const std::vector<std::string>& arguments);

}  // namespace render
