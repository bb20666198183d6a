#pragma once

#include <string>
#include <vector>

#include "host/render/FrameRunner.h"
#include "host/render/PictureTaker.h"

namespace render {

/// What a report tells of one frame.
struct ReportRow {
    FrameOutcome outcome;
    std::string input;
    std::string output;
    ResultFacts facts;
    std::vector<std::string> warnings;
};

/// How a report of each kind begins, blanks and line ends left out.
extern const char* const kJsonReportBeginning;
extern const char* const kCsvReportBeginning;

std::string jsonReport(const std::vector<ReportRow>& rows, ExitCode exitCode);
std::string csvReport(const std::vector<ReportRow>& rows);

}  // namespace render
