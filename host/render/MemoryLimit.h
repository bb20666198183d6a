#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/media/MediaSource.h"
#include "host/render/CommandLine.h"
#include "host/render/Messages.h"

namespace render {

/// "500M", "2G", "1.5GiB", or bytes, in units of 1024. Throws UsageError.
std::int64_t parseMemorySize(const std::string& text);

/// "1.5 GiB"
std::string sizeText(std::int64_t bytes);

/// What a run needs at most, as far as one can tell from sizes and filters.
struct MemoryEstimate {
    std::int64_t fixedBytes = 0;   ///< of the program
    std::int64_t bytesPerJob = 0;  ///< while a frame is worked on and others wait for the disk

    std::int64_t total(int jobs) const { return fixedBytes + jobs * bytesPerJob; }
};

/// For the largest of the frames, of which the heads are read, and the chain in the kernel store.
/// Frames that cannot be read do not count. GUI thread.
MemoryEstimate estimateMemory(const media::MediaSource& source,
                              const std::vector<std::int64_t>& frames);

/// Lowers the number of jobs until the run fits into the memory that the options allow, and says
/// so. Throws UsageError when one job does not fit. GUI thread.
void limitJobs(RunOptions& options, const media::MediaSource& source,
               const std::vector<std::int64_t>& frames, const Messages& messages);

}  // namespace render
