#pragma once

#include <functional>
#include <string>
#include <vector>

namespace render {

/// Runs what a program is for, and turns what it throws into one line on standard error and the
/// exit code that belongs to it.
int reportErrors(const char* program, const std::function<int()>& work);

/// fxrender: results on standard output, messages on standard error, an ExitCode.
int runFxrender(const std::vector<std::string>& arguments);

}  // namespace render
