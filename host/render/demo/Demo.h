#pragma once

#include <string>
#include <vector>

namespace render {

/// fxdemo [FOLDER]: draws a sample picture, runs every filter of the plug-in on it the way fxrender
/// does, and writes the sample, the results and a contact sheet of all of them into the folder
/// ("out" when none is given). Prints where they are. Returns an ExitCode.
int runFxdemo(const std::vector<std::string>& arguments);

}  // namespace render
