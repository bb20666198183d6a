#include "host/render/Report.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/media/file_names.h"
#include "host/render/csv_field.h"

namespace render {

namespace {

const char* statusName(FrameOutcome::Status status) {
    switch (status) {
        case FrameOutcome::UpToDate:
            return "up to date";
        case FrameOutcome::Finished:
            return "done";
        case FrameOutcome::Failed:
            return "failed";
        case FrameOutcome::NotStarted:
            break;
    }
    return "not started";
}

std::int64_t milliseconds(const ReportRow& row) {
    return std::llround(1000 * row.outcome.seconds);
}

}  // namespace

const char* const kJsonReportBeginning = "{\"exitCode\":";
const char* const kCsvReportBeginning = "frame,status,milliseconds,";

std::string jsonReport(const std::vector<ReportRow>& rows, ExitCode exitCode) {
    nlohmann::ordered_json frames = nlohmann::ordered_json::array();
    for (const ReportRow& row : rows) {
        nlohmann::ordered_json entry = {{"frame", row.outcome.frame},
                                        {"input", media::shown(row.input)},
                                        {"output", media::shown(row.output)},
                                        {"status", statusName(row.outcome.status)},
                                        {"milliseconds", milliseconds(row)}};
        if (!row.facts.pixels.empty()) entry["pixels"] = row.facts.pixels;
        if (const auto count = row.facts.objects)
            entry["objects"] =
                *count < 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(*count);
        for (const std::string& warning : row.warnings)
            entry["warnings"].push_back(media::shown(warning));
        if (!row.outcome.error.empty()) entry["error"] = media::shown(row.outcome.error);
        frames.push_back(entry);
    }
    const nlohmann::ordered_json report = {{"exitCode", static_cast<int>(exitCode)},
                                           {"frames", frames}};
    return report.dump(2) + '\n';
}

std::string csvReport(const std::vector<ReportRow>& rows) {
    std::string text = "frame,status,milliseconds,objects,pixels,warnings,error,input,output\n";
    for (const ReportRow& row : rows) {
        std::string warnings;
        for (const std::string& warning : row.warnings)
            warnings += (warnings.empty() ? "" : "; ") + warning;
        const int objects = row.facts.objects.value_or(-1);
        text += std::to_string(row.outcome.frame) + ',' + statusName(row.outcome.status) + ',' +
                std::to_string(milliseconds(row)) + ',' +
                (objects < 0 ? "" : std::to_string(objects)) + ',' + row.facts.pixels + ',' +
                csvField(warnings) + ',' + csvField(row.outcome.error) + ',' + csvField(row.input) +
                ',' + csvField(row.output) + '\n';
    }
    return text;
}

}  // namespace render
