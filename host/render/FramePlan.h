#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/render/CommandLine.h"
#include "host/render/Messages.h"
#include "host/render/OutputBook.h"

namespace render {

/// Every count-th of the frames, from the index-th on: the shards of one job share out its frames.
std::vector<std::int64_t> framesOfShard(const std::vector<std::int64_t>& frames,
                                        const Shard& shard);

/// What a run does of the frames of a job.
struct FramePlan {
    std::vector<std::int64_t> mine;   ///< of this shard
    std::vector<std::int64_t> todo;   ///< of those, the ones to render
    std::set<std::int64_t> upToDate;  ///< and the others, which stand
    /// What is left alone or done again, and why, one line each.
    std::vector<std::string> remarks;
};

/// book: says what stands already; null when that does not matter.
FramePlan planFrames(const std::vector<std::int64_t>& frames, const Shard& shard,
                     const OutputBook* book);

}  // namespace render
