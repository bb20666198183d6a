#include "host/render/FrameRanges.h"

#include <algorithm>

namespace render {

namespace {

std::string numbers(const FrameRange& range) {
    return range.first == range.last
               ? std::to_string(range.first)
               : std::to_string(range.first) + " to " + std::to_string(range.last);
}

}  // namespace

std::string FrameRange::text() const {
    return (first == last ? "frame " : "frames ") + numbers(*this);
}

std::vector<FrameRange> rangesOf(const std::vector<std::int64_t>& some,
                                 const std::vector<std::int64_t>& all) {
    std::vector<FrameRange> ranges;
    auto next = all.begin();
    for (const std::int64_t frame : some) {
        if (!ranges.empty() && next != all.end() && *next == frame)
            ranges.back().last = frame;
        else
            ranges.push_back({frame, frame});
        next = std::upper_bound(all.begin(), all.end(), frame);
    }
    return ranges;
}

std::string rangesText(const std::vector<FrameRange>& ranges) {
    const std::size_t most = 5;
    const std::size_t shown = std::min(ranges.size(), most);
    std::string text = ranges.size() == 1 ? ranges.front().text() : "frames ";
    for (std::size_t i = 0; ranges.size() > 1 && i < shown; ++i)
        text += (i == 0 ? "" : i + 1 == ranges.size() ? " and " : ", ") + numbers(ranges[i]);
    if (ranges.size() > shown)
        text += " and " + std::to_string(ranges.size() - shown) + " more ranges";
    return text;
}

}  // namespace render
