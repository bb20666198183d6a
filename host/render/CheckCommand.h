#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/document/FilterCatalog.h"
#include "host/media/MediaSource.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"

namespace render {

/// Says on standard output what would go wrong or be meaningless, one line each, and renders
/// nothing. Returns Done when there is nothing to say, SomeFramesFailed otherwise. Throws as
/// runApply does when the command itself cannot be carried out.
ExitCode runCheck(const Selection& selection, const document::FilterCatalog& catalog);

/// What apply warns of before it renders: settings at every frame, sizes and pixels of the first
/// one.
std::vector<std::string> warningsFor(const media::MediaSource& source,
                                     const std::vector<std::int64_t>& frames);

}  // namespace render
