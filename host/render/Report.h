#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/render/FrameRunner.h"

namespace render {

/// How every report begins, blanks and line ends left out.
extern const char* const kReportBeginning;

/// What became of every frame, as JSON. The functions name a frame's files and tell how many
/// objects its result shows, if it shows objects (-1: unknown).
std::string reportText(const std::vector<FrameOutcome>& outcomes, ExitCode exitCode,
                       const std::function<std::string(std::int64_t)>& inputPath,
                       const std::function<std::string(std::int64_t)>& outputPath,
                       const std::function<std::optional<int>(std::int64_t)>& objects);

}  // namespace render
