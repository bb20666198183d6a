#pragma once

#include "host/document/FilterCatalog.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"
#include "host/render/Messages.h"

namespace render {

/// Applies filters to pictures as the user asks. Names what a dry run would write on standard
/// output; progress goes to standard error. Returns Done, SomeFramesFailed or what a signal ends
/// with; throws CommandError, document::FilterError or media::MediaError for all else.
ExitCode runApply(const ApplyOptions& options, const document::FilterCatalog& catalog,
                  const Messages& messages);

}  // namespace render
