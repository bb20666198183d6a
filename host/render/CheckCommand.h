#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/document/ChainCheck.h"
#include "host/document/FilterCatalog.h"
#include "host/media/MediaSource.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"
#include "host/render/Messages.h"

namespace render {

/// Says on standard output what would go wrong or be meaningless, one line each, and renders
/// nothing. Returns Done when there is nothing to say, SomeFramesFailed otherwise. Throws as
/// runApply does when the command itself cannot be carried out.
ExitCode runCheck(const Selection& selection, const document::FilterCatalog& catalog,
                  const Messages& messages);

/// What apply looks at before it renders frames, if there are any: settings at every one, size and
/// pixels of the first.
document::ChainCheck checkBeforehand(const media::MediaSource& source,
                                     const std::vector<std::int64_t>& frames);

}  // namespace render
