#pragma once

#include <string>

#include "host/render/CommandLine.h"

namespace CLI {
class App;
}

namespace render {

/// Gives the program its commands, with their options, arguments and notes: what is parsed goes
/// into `result`, and what `render` is given into `project`.
void defineCommands(CLI::App& app, CommandLine& result, ApplyOptions& project);

std::string versionText();

}  // namespace render
