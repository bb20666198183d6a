#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

TEST(Fxdemo, LeavesAResultForEveryFilterAndAContactSheet) {
    QTemporaryDir folder;
    const ProgramResult demo = RunningProgram(FXDEMO, {"show"}, folder.path()).wait();
    EXPECT_EQ(demo.exitCode, 0) << demo.err;
    EXPECT_EQ(demo.err, "");
    EXPECT_THAT(demo.out, HasSubstr("show/contact-sheet.png"));
    const QImage sample(folder.filePath("show/sample.png"));
    ASSERT_FALSE(sample.isNull());

    const json list =
        json::parse(RunningProgram(FXRENDER, {"list", "--json"}, folder.path()).wait().out);
    const QStringList results =
        QDir(folder.filePath("show")).entryList({"[0-9][0-9]-*.png"}, QDir::Files);
    EXPECT_GE(results.size(), static_cast<int>(list["filters"].size()));
    for (const QString& name : results) {
        const QImage result(folder.filePath("show/" + name));
        EXPECT_EQ(result.size(), sample.size()) << name.toStdString();
        EXPECT_NE(result.convertToFormat(sample.format()), sample) << name.toStdString();
    }
    EXPECT_GT(QImage(folder.filePath("show/contact-sheet.png")).width(), sample.width());
}

}  // namespace
