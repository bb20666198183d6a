#pragma once

#include "host/document/FilterCatalog.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"

namespace render {

/// Applies filters to pictures as the user asks. Names what a dry run would write on standard
/// output; progress goes to standard error. Returns Done, SomeFramesFailed, Interrupted or
/// Terminated; throws CommandError, document::FilterError or media::MediaError for all else.
ExitCode runApply(const ApplyOptions& options, const document::FilterCatalog& catalog);

}  // namespace render
