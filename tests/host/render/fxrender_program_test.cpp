// The built programs, started as a user starts them.
#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class FxrenderProgram : public FxrenderTest {
protected:
    ProgramResult shell(const std::string& commands) const {
        return program({"/bin/sh", "-c", commands});
    }
    /// Descriptor 4 writes to a reader that has gone away.
    static constexpr const char* kNobodyReads = "mkfifo pipe; exec 3<>pipe 4>pipe 3<&-; ";
    static constexpr const char* kApply =
        "exec " FXRENDER " apply shot_####.png -o out/ -f 'Channel separation' ";
};

TEST_F(FxrenderProgram, LostResultsAreNoSuccess) {
    for (const char* where : {"> /dev/full", ">&-", ">&4"}) {
        const ProgramResult result =
            shell(std::string(kNobodyReads) + "exec " FXRENDER " list " + where);
        EXPECT_EQ(result.exitCode, 74) << where;
        EXPECT_THAT(result.err, HasSubstr("standard output")) << where;
        QFile::remove(path("pipe"));
    }
}

TEST_F(FxrenderProgram, NeedsNoStandardStreamsAndNoReaderToRender) {
    saveSequence(12);
    ASSERT_EQ(shell(std::string(kApply) + "-q").exitCode, 0);
    std::vector<std::string> expected;
    for (int frame = 0; frame < 12; ++frame) expected.push_back(contents("out/" + shot(frame)));
    for (const std::string streams : {"--progress json 0<&- 1>&- 2>&-", "--progress json 2>&4"}) {
        QDir(path("out")).removeRecursively();
        QFile::remove(path("pipe"));
        EXPECT_EQ(shell(kNobodyReads + (kApply + streams)).exitCode, 0) << streams;
        for (int frame = 0; frame < 12; ++frame)
            EXPECT_EQ(contents("out/" + shot(frame)), expected[frame]) << streams << frame;
    }
}

TEST_F(FxrenderProgram, AReportThatDoesNotFitLeavesTheOldOne) {
    for (int frame = 0; frame < 40; ++frame) save(picture(frame, 4, 4), shot(frame));
    const QByteArray old = "{\"exitCode\": 0, \"frames\": []}\n";
    write("report.json", old);
    const ProgramResult result =
        shell("ulimit -f 2; " + (kApply + std::string("-q --report report.json")));
    EXPECT_EQ(result.exitCode, 74);
    EXPECT_THAT(result.err, HasSubstr("report.json"));
    EXPECT_EQ(contents("report.json"), old.toStdString());
    EXPECT_EQ(files().filter("out/").size(), 40);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(FxrenderProgram, AShortageOfMemoryNamesThePictureAndSaysTryAgain) {
    write("large.ppm", "P6 16384 16384 255\n");
    std::filesystem::resize_file(path("large.ppm").toStdString(), 19 + 3u * 16384 * 16384);
    const ProgramResult result =
        shell("ulimit -v 1000000; exec " FXRENDER " apply large.ppm -o out.png -f Degauss");
    EXPECT_EQ(result.exitCode, 75) << result.err;
    EXPECT_THAT(result.err, HasSubstr("large.ppm: there is not enough memory"));

    // What reads this format would end the program while it is loaded.
    write("small.ppm", "P6 1 1 255\nabc");
    const ProgramResult unloaded =
        shell("ulimit -v 450000; exec " FXRENDER " apply small.ppm -o out.png -f Degauss");
    EXPECT_EQ(unloaded.exitCode, 75) << unloaded.err;
    EXPECT_THAT(unloaded.err, HasSubstr("small.ppm: the library for BMP, PNM"));
}
#endif

TEST_F(FxrenderProgram, SeeksItsPluginBesideItself) {
    ASSERT_TRUE(QDir(folder()).mkdir("bin"));
    ASSERT_TRUE(QFile::copy(FXRENDER, path("bin/fxrender")));
    const ProgramResult result = program({path("bin/fxrender").toStdString(), "list"});
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
    waitFor("out/" + shot(0));
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

INSTANTIATE_TEST_SUITE_P(All, FxrenderSignal, testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM));

class Fxdemo : public FxrenderTest {};

TEST_F(Fxdemo, LeavesAResultForEveryFilterAndAContactSheet) {
    const ProgramResult demo = program({FXDEMO, "show"});
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
