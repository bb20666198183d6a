#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/render/Program.h"

namespace {

using testing::HasSubstr;

/// Every refusal is one line on standard error, and nothing is written.
class FxrenderErrors : public FxrenderTest {
protected:
    void SetUp() override {
        save(picture(1), "in.png");
        write("text.png", "This is no picture.\n");
        m_before = files();
    }
    void TearDown() override { EXPECT_EQ(files(), m_before); }

    struct Row {
        Arguments arguments;
        int exitCode;
        const char* message;
    };
    static Arguments applying(const char* input, const char* output, const char* filter) {
        return {"apply", input, "-o", output, "-f", filter};
    }

    static constexpr const char* kSeparate = "Channel separation";

private:
    QStringList m_before;
};

TEST_F(FxrenderErrors, HelpAndVersionAreResultsAndNoArgumentsAnError) {
    const ProgramResult usage = fxrender({});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_EQ(usage.out, "");
    EXPECT_THAT(usage.err, HasSubstr("fxrender apply INPUT"));
    EXPECT_THAT(fxrender({"--version"}).out, testing::StartsWith("fxrender "));
    const ProgramResult help = fxrender({"apply", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_THAT(help.out, HasSubstr("--output OUTPUT"));
}

TEST_F(FxrenderErrors, CommandLinesInputsOutputsAndFiltersThatCannotBe) {
    const Row rows[] = {
        {{"aply"}, 2, "did you mean apply?"},
        {{"frobnicate"}, 2, "valid: list, apply"},
        {{"list", "json"}, 2, "there is no filter \"json\""},
        {{"list", "Degauss", "Degauss"}, 2, "fxrender list has no use for Degauss"},
        {{"list", "--markdown"}, 2, "KEY"},
        {{"list", "--jsom"}, 2, "did you mean --json?"},
        {{"apply", "in.png", "--outptu", "o.png", "-f", kSeparate}, 2, "did you mean --output?"},
        {{"apply", "in.png", "-f", kSeparate}, 2, "--output"},
        {{"apply", "in.png", "-o", "o.png"}, 2, "--filter"},
        {{"apply", "-o", "o.png", "-f", kSeparate}, 2, "INPUT"},
        {{"check", "in.png"}, 2, "--filter"},
        {{"count", "in.png", "-f", kSeparate}, 65, "not black and white"},
        {{"count", "in.png", "-f", "Degauss"}, 65, "Channel separation"},
        {{"count", "in.png", "-f", kSeparate, "--labels", "l.jpg"}, 73, ".png or .tif"},
        {{"count", "in.png", "-f", kSeparate, "--labels", "new/", "--outlines", "./new"},
         2,
         "new/in.png is a label picture"},
        {{"count", "in.png", "-f", kSeparate, "--table", "in.png"}, 2, "in.png is an input"},
        {{"count", "in.png", "-f", kSeparate, "--table", "text.png"}, 73, "--table"},
        {{"check", "missing.png", "-f", "Degauss"}, 66, "missing.png"},
        {{"list", "--plugin", "none.so"}, 66, "none.so"},
        {{"list", "--plugin", "in.png"}, 65, "in.png"},
        {{"list", "--plugin", OTHER_LIBRARY}, 65, OTHER_LIBRARY},
        {applying("none.png", "o.png", kSeparate), 66, "none.png"},
        {applying("text.png", "o.png", kSeparate), 65, "text.png"},
        {applying("in.png", "in.png", kSeparate), 73, "in.png"},
        {applying("in.png", "./in.png", kSeparate), 73, "in.png"},
        {applying("in.png", "missing/o.png", kSeparate), 73, "missing"},
        {applying("in.png", "o.xyz", kSeparate), 73, "o.xyz"},
        {applying("in.png", "-", kSeparate), 2, "out_####.png"},
        {applying("in.png", "\x1b[31m\xff.xyz", kSeparate), 73, "\\x1b[31m\\xff.xyz"},
        {applying("in.png", "o.png", "Chanel separation"), 2,
         "did you mean \"Channel separation\"?"},
        {applying("in.png", "o.png", "two\nlines"), 2, "\"two\\x0alines\""},
    };
    for (const Row& row : rows) expectRefusal(row.arguments, row.exitCode, row.message);
}

TEST_F(FxrenderErrors, OptionsThatCannotBe) {
    const Row rows[] = {
        {{"--keepgoing"}, 2, "did you mean --keep-going?"},
        {{"--jobs", "0"}, 2, "--jobs"},
        {{"--progress", "loud"}, 2, "no \"loud\"; valid: auto, bar, plain, json, none\n"},
        {{"--frames", ""}, 2, "--frames: the value is empty"},
        {{"--report", ""}, 2, "--report: the value is empty"},
        {{"--frames", "1-"}, 2, "frames are 0 to 0"},
        {{"--frames", "-5"}, 2, "no frame \"-5\""},
        {{"--frames", "x"}, 2, "\"x\""},
        {{"--report", "missing/r.json"}, 73, "missing/r.json"},
        {{"--report", "in.png"}, 2, "in.png"},
        {{"--report", "o.png"}, 2, "o.png"},
        {{"--report", "text.png"}, 73, "text.png"},  // there, and no report
        {{"--report", "/dev/null"}, 73, "no regular file"},
    };
    for (const auto& row : rows)
        expectRefusal(applying("in.png", "o.png", kSeparate) + row.arguments, row.exitCode,
                      row.message);
    expectRefusal(applying("in.png", "out/", kSeparate) + Arguments{"text.png", "-n"}, 65,
                  "text.png");
}

TEST_F(FxrenderErrors, AFolderWithoutPermission) {
    ASSERT_TRUE(QDir(folder()).mkdir("closed"));
    chmod(path("closed").toLocal8Bit(), 0555);
    chmod(folder().toLocal8Bit(), 0755);
    expectRefused(fxrenderAsUser({"apply", "in.png", "-o", "closed/o.png", "-f", kSeparate}), 73,
                  "closed");
}

}  // namespace
