#include "host/render/SaveCommand.h"

#include <cstdio>

#include "host/media/file_names.h"
#include "host/render/FrameRun.h"
#include "host/render/ProjectFile.h"

namespace render {

ExitCode runSave(const SaveOptions& options, const document::FilterCatalog& catalog,
                 const Messages& messages) {
    if (!isProjectName(options.project))
        throw UsageError(media::shown(options.project) +
                         ": the name of a project ends in .fxp; the project is named first, then "
                         "what it reads");
    const ChosenFrames chosen = chooseFrames(options, catalog, messages);
    document::Project project;
    project.inputs = options.inputs;
    project.range = options.range;
    writeProjectFile(options.project, project);
    std::printf("%s: %s, %zu %s\n", media::shown(options.project).c_str(),
                frameCountText(chosen.frames.size()).c_str(), options.filters.size(),
                options.filters.size() == 1 ? "filter" : "filters");
    return Done;
}

}  // namespace render
