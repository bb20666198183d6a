#pragma once

#include "host/document/FilterCatalog.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"
#include "host/render/Messages.h"

namespace render {

/// Writes a project and says on standard output what it holds. Throws CommandError,
/// document::FilterError or media::MediaError.
ExitCode runSave(const SaveOptions& options, const document::FilterCatalog& catalog,
                 const Messages& messages);

}  // namespace render
