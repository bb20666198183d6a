#include "host/render/FrameList.h"

#include <QRegularExpression>
#include <algorithm>
#include <limits>

#include "host/render/ExitCode.h"

namespace render {

namespace {

const char kHowToWrite[] = "write frames like 1,5,10-20:2 or 100-";

std::int64_t toFrame(const std::string& digits, const std::string& entry) {
    try {
        return std::stoll(digits);
    } catch (const std::out_of_range&) {
        throw UsageError("--frames: the number in \"" + entry + "\" is too large");
    }
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (true) {
        const std::size_t comma = text.find(',', begin);
        parts.push_back(text.substr(begin, comma - begin));
        if (comma == std::string::npos) return parts;
        begin = comma + 1;
    }
}

}  // namespace

FrameList::FrameList(const std::string& text) {
    static const QRegularExpression entryPattern(
        QStringLiteral(R"(^\s*(-?[0-9]+)(?:(-)(-?[0-9]+)?(?::([0-9]+))?)?\s*$)"));
    for (const std::string& part : split(text)) {
        const std::size_t longestQuotation = 100;
        const auto match = entryPattern.match(QString::fromStdString(part));
        if (!match.hasMatch())
            throw UsageError("--frames: cannot read \"" + part.substr(0, longestQuotation) +
                             "\"; " + kHowToWrite);
        const auto number = [&](int group) {
            return toFrame(match.captured(group).toStdString(), part);
        };
        const bool isRange = match.capturedLength(2) > 0;
        const bool hasEnd = match.capturedLength(3) > 0;
        Entry entry;
        entry.text = part;
        entry.first = number(1);
        entry.last = hasEnd    ? number(3)
                     : isRange ? std::numeric_limits<std::int64_t>::max()
                               : entry.first;
        entry.step = match.capturedLength(4) > 0 ? number(4) : 1;
        if (entry.last < entry.first)
            throw UsageError("--frames: \"" + part + "\" ends before it begins; write " +
                             std::to_string(entry.last) + "-" + std::to_string(entry.first));
        if (entry.step < 1)
            throw UsageError("--frames: the step in \"" + part + "\" must be 1 or more");
        m_entries.push_back(entry);
    }
}

bool FrameList::Entry::contains(std::int64_t frame) const {
    if (frame < first || frame > last) return false;
    // Unsigned: the distance between two 64-bit numbers need not fit a signed one.
    return (static_cast<std::uint64_t>(frame) - static_cast<std::uint64_t>(first)) %
               static_cast<std::uint64_t>(step) ==
           0;
}

std::vector<std::int64_t> FrameList::chosenFrom(const std::vector<std::int64_t>& available) const {
    for (const Entry& entry : m_entries) {
        const bool choosesOne = std::any_of(available.begin(), available.end(),
                                            [&](std::int64_t f) { return entry.contains(f); });
        if (!choosesOne)
            throw UsageError("--frames: the input has no frame \"" + entry.text +
                             "\"; its frames are " + std::to_string(available.front()) + " to " +
                             std::to_string(available.back()));
    }
    std::vector<std::int64_t> chosen;
    for (std::int64_t frame : available)
        if (std::any_of(m_entries.begin(), m_entries.end(),
                        [&](const Entry& entry) { return entry.contains(frame); }))
            chosen.push_back(frame);
    return chosen;
}

std::vector<std::int64_t> chosenFrames(const std::string& list, const media::MediaSource& source) {
    return list.empty() ? source.frames() : FrameList(list).chosenFrom(source.frames());
}

}  // namespace render
