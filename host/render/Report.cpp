#include "host/render/Report.h"

#include <nlohmann/json.hpp>

#include "host/media/file_names.h"

namespace render {

namespace {

const char* statusName(FrameOutcome::Status status) {
    switch (status) {
        case FrameOutcome::Finished:
            return "done";
        case FrameOutcome::Failed:
            return "failed";
        case FrameOutcome::NotStarted:
            break;
    }
    return "not started";
}

}  // namespace

const char* const kReportBeginning = "{\"exitCode\":";

std::string reportText(const std::vector<FrameOutcome>& outcomes, ExitCode exitCode,
                       const std::function<std::string(std::int64_t)>& inputPath,
                       const std::function<std::string(std::int64_t)>& outputPath,
                       const std::function<std::optional<int>(std::int64_t)>& objects) {
    nlohmann::ordered_json frames = nlohmann::ordered_json::array();
    for (const FrameOutcome& outcome : outcomes) {
        nlohmann::ordered_json entry = {{"frame", outcome.frame},
                                        {"input", media::shown(inputPath(outcome.frame))},
                                        {"output", media::shown(outputPath(outcome.frame))},
                                        {"status", statusName(outcome.status)},
                                        {"seconds", outcome.seconds}};
        if (const auto count = objects(outcome.frame))
            entry["objects"] =
                *count < 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(*count);
        if (!outcome.error.empty()) entry["error"] = media::shown(outcome.error);
        frames.push_back(entry);
    }
    const nlohmann::ordered_json report = {{"exitCode", static_cast<int>(exitCode)},
                                           {"frames", frames}};
    return report.dump(2) + '\n';
}

}  // namespace render
