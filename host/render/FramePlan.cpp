#include "host/render/FramePlan.h"

#include "host/render/FrameRanges.h"
#include "host/render/Progress.h"

namespace render {

std::vector<std::int64_t> framesOfShard(const std::vector<std::int64_t>& frames,
                                        const Shard& shard) {
    std::vector<std::int64_t> mine;
    const std::size_t step = static_cast<std::size_t>(shard.count);
    for (std::size_t i = static_cast<std::size_t>(shard.index - 1); i < frames.size(); i += step)
        mine.push_back(frames[i]);
    return mine;
}

FramePlan planFrames(const std::vector<std::int64_t>& frames, const Shard& shard,
                     const OutputBook* book) {
    FramePlan plan;
    plan.mine = framesOfShard(frames, shard);
    if (shard.count > 1)
        plan.remarks.push_back("shard " + shard.text() + ": " + std::to_string(plan.mine.size()) +
                               " of " + frameCountText(frames.size()) +
                               ", the others are left to the other shards");
    std::map<std::string, std::vector<std::int64_t>> standing;  // by what is to be said of them
    for (const std::int64_t frame : plan.mine) {
        const Standing stands =
            book ? book->standingOf(frame, OutputBook::Look::Quick) : Standing();
        if (stands.kind == Standing::UpToDate)
            plan.upToDate.insert(frame);
        else
            plan.todo.push_back(frame);
        if (stands.kind == Standing::Missing) continue;
        standing[stands.text +
                 (stands.kind == Standing::UpToDate ? " and left alone" : ", so done again")]
            .push_back(frame);
    }
    for (const auto& [what, which] : standing)
        plan.remarks.push_back(rangesText(rangesOf(which, plan.mine)) +
                               (shard.count > 1 ? " of this shard: " : ": ") + what);
    return plan;
}

}  // namespace render
