// The built programs, started as a user starts them.
#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class FxrenderProgram : public FxrenderTest {};

TEST_F(FxrenderProgram, AFullStandardOutputIsNoSuccess) {
    const ProgramResult result =
        RunningProgram({"/bin/sh", "-c", "exec " FXRENDER " list > /dev/full"}, folder()).wait();
    EXPECT_EQ(result.exitCode, 74);
    EXPECT_THAT(result.err, HasSubstr("standard output"));
}

TEST_F(FxrenderProgram, SeeksItsPluginBesideItself) {
    ASSERT_TRUE(QDir(folder()).mkdir("bin"));
    ASSERT_TRUE(QFile::copy(FXRENDER, path("bin/fxrender")));
    const ProgramResult result =
        RunningProgram({path("bin/fxrender").toStdString(), "list"}, folder()).wait();
    EXPECT_EQ(result.exitCode, 66);
    EXPECT_THAT(result.err, HasSubstr(path("plugins/libBasicFiltersPlugin.so").toStdString()));
    EXPECT_THAT(result.err, HasSubstr("--plugin"));
}

/// Sends a signal in the middle of a long run.
class FxrenderSignal : public FxrenderTest, public testing::WithParamInterface<int> {};

TEST_P(FxrenderSignal, EndsAfterTheCurrentFrameAndLeavesNothingHalfDone) {
    const int count = 300;
    save(picture(0, 640, 480), shot(0));
    for (int frame = 1; frame < count; ++frame)
        std::filesystem::create_hard_link(path(shot(0)).toStdString(),
                                          path(shot(frame)).toStdString());
    RunningProgram program({FXRENDER, "apply", "shot_####.png", "-o", "out/", "-f",
                            "Blur and enhance:Blur=13", "--jobs", "2", "--report", "report.json"},
                           folder());
    // The first result shows that the run is under way.
    const QDir out(path("out"));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (!out.exists(shot(0)) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    program.send(GetParam());
    const ProgramResult result = program.wait();
    EXPECT_EQ(result.exitCode, 128 + GetParam()) << result.err;
    EXPECT_THAT(result.err, HasSubstr("not begun"));

    // Nothing but whole pictures, as many as the report says.
    int done = 0;
    const json report = jsonIn("report.json");
    for (const json& frame : report["frames"]) done += frame["status"] == "done";
    const QStringList written = out.entryList(QDir::Files | QDir::Hidden);
    EXPECT_EQ(written.size(), done);
    EXPECT_GE(done, 1);
    EXPECT_LT(done, count);
    for (const QString& name : written)
        EXPECT_EQ(load("out/" + name).size(), QSize(640, 480)) << name.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Both, FxrenderSignal, testing::Values(SIGINT, SIGTERM));

class Fxdemo : public FxrenderTest {};

TEST_F(Fxdemo, LeavesAResultForEveryFilterAndAContactSheet) {
    const ProgramResult demo = RunningProgram({FXDEMO, "show"}, folder()).wait();
    EXPECT_EQ(demo.exitCode, 0) << demo.err;
    EXPECT_EQ(demo.err, "");
    EXPECT_THAT(demo.out, HasSubstr("show/contact-sheet.png"));
    const QImage sample = load("show/sample.png");

    const json list = json::parse(fxrender({"list", "--json"}).out);
    const QStringList results = QDir(path("show")).entryList({"[0-9][0-9]-*.png"}, QDir::Files);
    EXPECT_GE(results.size(), static_cast<int>(list["filters"].size()));
    for (const QString& name : results) {
        const QImage result = load("show/" + name);
        EXPECT_EQ(result.size(), sample.size()) << name.toStdString();
        EXPECT_NE(result.convertToFormat(sample.format()), sample) << name.toStdString();
    }
    EXPECT_GT(load("show/contact-sheet.png").width(), sample.width());
}

}  // namespace
