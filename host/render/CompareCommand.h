#pragma once

#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"

namespace render {

/// Says on standard output how the pictures of two inputs differ, frame by frame, and shows it
/// where asked for. Returns Done when none differs, else PicturesDiffer; throws CommandError or
/// media::MediaError.
ExitCode runCompare(const CompareOptions& options);

}  // namespace render
