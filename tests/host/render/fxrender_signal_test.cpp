#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/host/render/Program.h"

namespace {

/// Sends a signal in the middle of a long run.
class FxrenderSignal : public FxrenderTest, public testing::WithParamInterface<int> {};

TEST_P(FxrenderSignal, EndsAfterTheCurrentFrameAndLeavesNothingHalfDone) {
    const int count = 300;
    save(picture(0, 640, 480), "shot_0000.png");
    for (int frame = 1; frame < count; ++frame) {
        const QString name = QStringLiteral("shot_%1.png").arg(frame, 4, 10, QChar('0'));
        std::filesystem::create_hard_link(path("shot_0000.png").toStdString(),
                                          path(name).toStdString());
    }
    RunningProgram program(FXRENDER,
                           {"apply", "shot_####.png", "-o", "out/", "-f",
                            "Blur and enhance:Blur=13", "--jobs", "2", "--report", "report.json"},
                           folder());
    // The first result shows that the run is under way.
    const QDir out(path("out"));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (!QFile::exists(path("out/shot_0000.png")) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    program.send(GetParam());
    const ProgramResult result = program.wait();
    EXPECT_EQ(result.exitCode, 128 + GetParam()) << result.err;
    EXPECT_THAT(result.err, testing::HasSubstr("not begun"));

    // Nothing but whole pictures, as many as the report says.
    int done = 0;
    const auto report = nlohmann::json::parse(contents("report.json").toStdString());
    for (const auto& frame : report["frames"]) done += frame["status"] == "done";
    const QStringList written = out.entryList(QDir::Files | QDir::Hidden);
    EXPECT_EQ(written.size(), done);
    EXPECT_GE(done, 1);
    EXPECT_LT(done, count);
    for (const QString& name : written)
        EXPECT_EQ(QImage(out.filePath(name)).size(), QSize(640, 480)) << name.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Both, FxrenderSignal, testing::Values(SIGINT, SIGTERM));

}  // namespace
