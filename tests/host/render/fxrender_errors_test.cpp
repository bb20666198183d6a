#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include "tests/host/render/Program.h"

namespace {

using testing::HasSubstr;

const char kSeparate[] = "Channel separation";

/// Every refusal is one line on standard error, and nothing is written.
class FxrenderErrors : public FxrenderTest {
protected:
    void SetUp() override {
        save(picture(1), "in.png");
        m_before = files();
    }
    void TearDown() override { EXPECT_EQ(files(), m_before); }

    void expectFilterRefused(const std::string& filter, const std::string& message) {
        expectRefusal({"apply", "in.png", "-o", "out.png", "-f", filter}, 2, message);
    }

    /// For files that a test itself adds.
    void acceptFiles() { m_before = files(); }

private:
    QStringList m_before;
};

TEST_F(FxrenderErrors, NoArgumentsShowUsage) {
    const ProgramResult result = fxrender({});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("fxrender apply INPUT"));
}

TEST_F(FxrenderErrors, HelpAndVersionAreResults) {
    EXPECT_THAT(fxrender({"--version"}).out, testing::StartsWith("fxrender "));
    const ProgramResult help = fxrender({"apply", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.err, "");
    for (const char* option : {"--output", "--filter", "--frames", "--jobs", "--keep-going",
                               "--dry-run", "--progress", "--report", "--quiet", "--plugin"})
        EXPECT_THAT(help.out, HasSubstr(option));
}

TEST_F(FxrenderErrors, WrongWordsOnTheCommandLine) {
    expectRefusal({"aply"}, 2, "did you mean apply?");
    expectRefusal({"frobnicate"}, 2, "valid: list, apply");
    expectRefusal({"list", "json"}, 2, "fxrender list has no use for json");
    expectRefusal({"list", "--jsom"}, 2, "did you mean --json?");
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--keepgoing"}, 2,
                  "did you mean --keep-going?");
    expectRefusal({"apply", "in.png", "--outptu", "o.png", "-f", kSeparate}, 2,
                  "did you mean --output?");
    expectRefusal({"apply", "in.png", "-f", kSeparate}, 2, "--output");
    expectRefusal({"apply", "in.png", "-o", "o.png"}, 2, "--filter");
    expectRefusal({"apply", "-o", "o.png", "-f", kSeparate}, 2, "INPUT");
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--jobs", "0"}, 2, "--jobs");
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--progress", "loud"}, 2,
                  "--progress");
}

TEST_F(FxrenderErrors, AFullStandardOutputIsNoSuccess) {
    const ProgramResult result =
        RunningProgram("/bin/sh", {"-c", "exec " FXRENDER " list > /dev/full"}, folder()).wait();
    EXPECT_EQ(result.exitCode, 74);
    EXPECT_THAT(result.err, HasSubstr("standard output"));
}

TEST_F(FxrenderErrors, FiltersThatCannotBe) {
    expectFilterRefused("Chanel separation", "did you mean \"Channel separation\"?");
    expectFilterRefused("Channel separation:Chanel=1", "did you mean \"Channel\"?");
    expectFilterRefused("Channel separation:Channel=7", "out of range; valid: 1 to 6");
    expectFilterRefused("two\nlines", "\"two\\x0alines\"");
}

TEST_F(FxrenderErrors, InputsThatCannotBeRead) {
    expectRefusal({"apply", "none.png", "-o", "o.png", "-f", kSeparate}, 66, "none.png");
    write("text.png", "This is no picture.\n");
    acceptFiles();
    expectRefusal({"apply", "text.png", "-o", "o.png", "-f", kSeparate}, 65, "text.png");
    expectRefusal({"apply", "in.png", "text.png", "-o", "out/", "-n", "-f", kSeparate}, 65,
                  "text.png");
}

TEST_F(FxrenderErrors, OutputsThatCannotBeMade) {
    expectRefusal({"apply", "in.png", "-o", "in.png", "-f", kSeparate}, 73, "in.png");
    expectRefusal({"apply", "in.png", "-o", "./in.png", "-f", kSeparate}, 73, "in.png");
    expectRefusal({"apply", "in.png", "-o", "missing/o.png", "-f", kSeparate}, 73, "missing");
    expectRefusal({"apply", "in.png", "-o", "o.xyz", "-f", kSeparate}, 73, "o.xyz");
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--report", "missing/r.json"},
                  73, "missing/r.json");
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--report", "in.png"}, 2,
                  "in.png");
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--report", "o.png"}, 2,
                  "o.png");
}

TEST_F(FxrenderErrors, AFolderWithoutPermission) {
    if (geteuid() == 0) return;  // root may write everywhere
    ASSERT_TRUE(QDir(folder()).mkdir("closed"));
    chmod(path("closed").toLocal8Bit(), 0500);
    expectRefusal({"apply", "in.png", "-o", "closed/o.png", "-f", kSeparate}, 73, "closed");
}

TEST_F(FxrenderErrors, FramesThatAreNot) {
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--frames", "1-"}, 2,
                  "frames are 0 to 0");
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--frames", "-5"}, 2,
                  "no frame \"-5\"");
    expectRefusal({"apply", "in.png", "-o", "o.png", "-f", kSeparate, "--frames", "x"}, 2, "\"x\"");
}

TEST_F(FxrenderErrors, TheOwnPluginIsSoughtBesideTheProgram) {
    ASSERT_TRUE(QDir(folder()).mkdir("bin"));
    ASSERT_TRUE(QFile::copy(FXRENDER, path("bin/fxrender")));
    acceptFiles();
    const ProgramResult result =
        RunningProgram(path("bin/fxrender").toStdString(), {"list"}, folder()).wait();
    EXPECT_EQ(result.exitCode, 66);
    EXPECT_THAT(result.err, HasSubstr(path("plugins/libBasicFiltersPlugin.so").toStdString()));
    EXPECT_THAT(result.err, HasSubstr("--plugin"));
}

TEST_F(FxrenderErrors, PluginsThatAreRefused) {
    expectRefusal({"list", "--plugin", "none.so"}, 66, "none.so");
    expectRefusal({"list", "--plugin", "in.png"}, 65, "in.png");
    expectRefusal({"list", "--plugin", OTHER_LIBRARY}, 65, OTHER_LIBRARY);
}

}  // namespace
