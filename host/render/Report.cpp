#include "host/render/Report.h"

#include <QFile>
#include <QSaveFile>
#include <nlohmann/json.hpp>

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

Report::Report(const std::string& path) : m_path(path) {
    QSaveFile probe(QFile::decodeName(path.c_str()));
    if (!probe.open(QIODevice::WriteOnly))
        throw CommandError(CannotCreate, "--report: " + path + ": cannot be written: " +
                                             probe.errorString().toStdString());
    probe.cancelWriting();
}

void Report::write(const std::vector<FrameOutcome>& outcomes, ExitCode exitCode,
                   const std::function<std::string(std::int64_t)>& inputPath,
                   const std::function<std::string(std::int64_t)>& outputPath,
                   const std::function<std::optional<int>(std::int64_t)>& objects) const {
    nlohmann::ordered_json frames = nlohmann::ordered_json::array();
    for (const FrameOutcome& outcome : outcomes) {
        nlohmann::ordered_json entry = {{"frame", outcome.frame},
                                        {"input", inputPath(outcome.frame)},
                                        {"output", outputPath(outcome.frame)},
                                        {"status", statusName(outcome.status)},
                                        {"seconds", outcome.seconds}};
        if (const auto count = objects(outcome.frame)) entry["objects"] = *count;
        if (!outcome.error.empty()) entry["error"] = outcome.error;
        frames.push_back(entry);
    }
    const nlohmann::ordered_json report = {{"exitCode", static_cast<int>(exitCode)},
                                           {"frames", frames}};
    // A file name need not be UTF-8: what is not becomes a replacement character.
    const std::string text =
        report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';

    QSaveFile file(QFile::decodeName(m_path.c_str()));
    const bool written = file.open(QIODevice::WriteOnly) &&
                         file.write(text.data(), static_cast<qint64>(text.size())) ==
                             static_cast<qint64>(text.size());
    if (!written || !file.commit())
        throw CommandError(ReadWriteError, "--report: " + m_path + ": cannot be written: " +
                                               file.errorString().toStdString());
}

}  // namespace render
