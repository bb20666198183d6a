#pragma once

#include "host/document/FilterCatalog.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"
#include "host/render/Messages.h"

namespace render {

/// Counts and measures the objects that the results of filters show. Numbers go to standard output
/// and into the files asked for, progress to standard error. Returns and throws as runApply does.
ExitCode runCount(const CountOptions& options, const document::FilterCatalog& catalog,
                  const Messages& messages);

}  // namespace render
