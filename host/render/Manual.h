#pragma once

#include <string>
#include <vector>

#include "host/render/CommandLine.h"

namespace render {

/// The manual page of the commands, as scdoc reads it.
std::string manualText(const std::vector<CommandDescription>& commands);

}  // namespace render
