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

/// As the library writes it. Only texts are made by it: its lists and objects take memory while
/// they are destroyed, and end the program where there is none.
std::string quoted(const std::string& text) {
    return nlohmann::json(media::shown(text)).dump();
}

std::string entryOf(const ReportRow& row) {
    std::string text = "    {\n      \"frame\": " + std::to_string(row.outcome.frame);
    const auto add = [&text](const char* name, const std::string& value) {
        text += std::string(",\n      \"") + name + "\": " + value;
    };
    add("input", quoted(row.input));
    add("output", quoted(row.output));
    add("status", quoted(statusName(row.outcome.status)));
    add("milliseconds", std::to_string(milliseconds(row)));
    if (!row.facts.pixels.empty()) add("pixels", quoted(row.facts.pixels));
    if (const auto count = row.facts.objects)
        add("objects", *count < 0 ? "null" : std::to_string(*count));
    std::string warnings;
    for (const std::string& warning : row.warnings)
        warnings += (warnings.empty() ? "\n        " : ",\n        ") + quoted(warning);
    if (!warnings.empty()) add("warnings", '[' + warnings + "\n      ]");
    if (!row.outcome.error.empty()) add("error", quoted(row.outcome.error));
    return text + "\n    }";
}

}  // namespace

const char* const kJsonReportBeginning = "{\"exitCode\":";
const char* const kCsvReportBeginning = "frame,status,milliseconds,";

std::string jsonReport(const std::vector<ReportRow>& rows, ExitCode exitCode) {
    std::string text = "{\n  \"exitCode\": " + std::to_string(exitCode) + ",\n  \"frames\": [";
    for (const ReportRow& row : rows) text += (&row == &rows.front() ? "\n" : ",\n") + entryOf(row);
    return text + (rows.empty() ? "]\n}\n" : "\n  ]\n}\n");
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
