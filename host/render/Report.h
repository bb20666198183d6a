#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/render/FrameRunner.h"

namespace render {

/// The file --report writes: what became of every frame, as JSON.
class Report {
public:
    /// Throws CommandError(CannotCreate) when no file can be made there; makes none yet.
    explicit Report(const std::string& path);

    /// Writes the report; it is complete or absent. The functions name a frame's files and tell how
    /// many objects its result shows, if it shows objects.
    /// Throws CommandError(ReadWriteError).
    void write(const std::vector<FrameOutcome>& outcomes, ExitCode exitCode,
               const std::function<std::string(std::int64_t)>& inputPath,
               const std::function<std::string(std::int64_t)>& outputPath,
               const std::function<std::optional<int>(std::int64_t)>& objects) const;

private:
    std::string m_path;
};

}  // namespace render
