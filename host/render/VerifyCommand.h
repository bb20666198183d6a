#pragma once

#include "host/document/FilterCatalog.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"
#include "host/render/Messages.h"

namespace render {

/// Holds the outputs of all shards against what would be written today and against their records,
/// byte by byte. Says on standard output what is missing, stale or damaged, a line for each range
/// of frames. Returns Done when nothing is, SomeFramesFailed otherwise; throws as runApply().
ExitCode runVerify(const VerifyOptions& options, const document::FilterCatalog& catalog,
                   const Messages& messages);

}  // namespace render
