#pragma once

#include <string>
#include <vector>

#include "host/document/Project.h"
#include "host/render/Messages.h"

namespace render {

/// Whether a file's name is that of a project.
bool isProjectName(const std::string& path);

/// Puts the filters of a project into the kernel store and returns the rest; what the project holds
/// and nobody here can use is said. GUI thread. Throws CommandError naming the file: MissingInput
/// or InvalidData.
document::Project readProjectFile(const std::string& path, const Messages& messages);

/// Writes a project with the filters that the kernel store holds, complete or not at all. A file
/// that is there already is replaced only when it is a project. GUI thread. Throws CommandError
/// (CannotCreate) or media::MediaError.
void writeProjectFile(const std::string& path, const document::Project& project);

}  // namespace render
