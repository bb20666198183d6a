#include "host/render/MemoryLimit.h"

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "host/document/FilterAdvice.h"
#include "host/kernel/KernelStore.h"
#include "host/media/MediaError.h"
#include "host/render/ExitCode.h"
#include "host/render/FrameRun.h"

namespace render {

namespace {

constexpr std::int64_t kMiB = std::int64_t{1} << 20;

// Measured, see docs/command-line.md: the program with its libraries, and what a frame takes beside
// its filters, in copies of the picture that is read.
constexpr std::int64_t kProgramBytes = 160 * kMiB;
constexpr double kCopiesOfPicture = 6;

/// The most that one of the filters takes at this frame.
double filterBytes(std::int64_t frame, const media::PictureInfo& info) {
    double most = 0;
    const KernelStore& store = KernelStore::instance();
    for (const InstanceId& id : store.instances()) {
        const HkKernelObjectData* object =
            HkFXKernelData::getInstance()->getObject(id.typeId, id.objectId);
        if (!object) continue;
        const document::FilterValues values(id.typeId, object->getKeyframesAt(frame));
        most = std::max(most, document::workingBytes(store.filterKey(id.typeId), values, info.width,
                                                     info.height));
    }
    return most;
}

/// What the process may still take, as far as the system says; the largest number where it does
/// not.
std::int64_t memoryAtHand() {
    std::int64_t bytes = std::numeric_limits<std::int64_t>::max();
    rlimit limit = {};
    if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
        bytes = static_cast<std::int64_t>(limit.rlim_cur);
    std::ifstream system("/proc/meminfo");
    const std::string wanted = "MemAvailable:";
    for (std::string name, rest; system >> name && std::getline(system, rest);)
        if (name == wanted)
            bytes = std::min<std::int64_t>(bytes, 1024 * std::strtoll(rest.c_str(), nullptr, 10));
    return bytes;
}

/// By the first frame: reading the heads of all of them takes long, and most are alike.
void warnOfShortage(const RunOptions& options, const media::MediaSource& source,
                    const std::vector<std::int64_t>& frames, const Messages& messages) {
    const int jobs = jobsFor(options, frames.size());
    const MemoryEstimate estimate = estimateMemory(source, {frames.front()});
    const std::int64_t free = memoryAtHand();
    if (estimate.total(jobs) <= free) return;
    messages.warning("about " + sizeText(estimate.total(jobs)) + " of memory are needed, and " +
                     sizeText(free) + " are free: frames may fail; " +
                     (estimate.total(1) <= free
                          ? "say --max-memory " + std::to_string(free / kMiB) + 'M'
                          : "close other programs or use smaller pictures"));
}

}  // namespace

std::int64_t parseMemorySize(const std::string& text) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    std::string unit(end);
    if (unit.size() > 1 && (unit.back() == 'B' || unit.back() == 'b')) unit.pop_back();
    if (unit.size() > 1 && unit.back() == 'i') unit.pop_back();
    const std::string units = "KMGT";
    int exponent = 0;
    bool isUnit = unit.empty();
    if (unit.size() == 1) {
        const std::size_t place = units.find(static_cast<char>(unit.front() & ~0x20));
        isUnit = place != std::string::npos;
        exponent = isUnit ? static_cast<int>(place) + 1 : 0;
    }
    const double bytes = std::ldexp(number, 10 * exponent);
    const double most = 1e18;
    if (end == text.c_str() || !isUnit || !(bytes >= 1) || bytes > most)
        throw UsageError("--max-memory: cannot use \"" + text +
                         "\"; write a size such as 500M or 2G");
    return static_cast<std::int64_t>(bytes);
}

std::string sizeText(std::int64_t bytes) {
    const char* const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
    double number = static_cast<double>(bytes);
    int unit = 0;
    for (; number >= 1000 && unit < 4; ++unit) number /= 1024;
    const int tenths = static_cast<int>(std::lround(number * 10));
    const bool isWhole = unit == 0 || tenths >= 1000;
    return std::to_string((tenths + (isWhole ? 5 : 0)) / 10) +
           (isWhole ? "" : '.' + std::to_string(tenths % 10)) + ' ' + units[unit];
}

MemoryEstimate estimateMemory(const media::MediaSource& source,
                              const std::vector<std::int64_t>& frames) {
    double most = 0;
    for (const std::int64_t frame : frames) {
        try {
            const media::PictureInfo info = source.info(frame);
            const double samples = static_cast<double>(info.width) * info.height * info.channels;
            most = std::max(most, kCopiesOfPicture * samples + filterBytes(frame, info));
        } catch (const media::MediaError&) {
            // Rendering the frame will say so.
        }
    }
    return {kProgramBytes, static_cast<std::int64_t>(most)};
}

void limitJobs(RunOptions& options, const media::MediaSource& source,
               const std::vector<std::int64_t>& frames, const Messages& messages) {
    if (frames.empty()) return;
    if (options.maxMemory == 0) return warnOfShortage(options, source, frames, messages);
    const MemoryEstimate estimate = estimateMemory(source, frames);
    const int wanted = jobsFor(options, frames.size());
    const std::int64_t fitting =
        (options.maxMemory - estimate.fixedBytes) / std::max<std::int64_t>(1, estimate.bytesPerJob);
    if (fitting < 1 || options.maxMemory < estimate.fixedBytes)
        throw UsageError("--max-memory " + sizeText(options.maxMemory) +
                         ": one frame at a time takes about " + sizeText(estimate.total(1)) +
                         "; allow that much, or use smaller pictures");
    options.jobs = static_cast<int>(std::min<std::int64_t>(wanted, fitting));
    if (options.jobs < wanted)
        messages.note("--max-memory " + sizeText(options.maxMemory) + ": " +
                      std::to_string(options.jobs) + (options.jobs == 1 ? " job" : " jobs") +
                      " instead of " + std::to_string(wanted) + ", as each takes about " +
                      sizeText(estimate.bytesPerJob));
}

}  // namespace render
