// Every command that a fenced block of the documents shows is run, as it stands there.
#include <gmock/gmock.h>

#include <QDirIterator>
#include <regex>
#include <sstream>

#include "tests/host/render/Program.h"

namespace {

/// A synopsis has places to fill in: dots, alternatives, words in capitals. A mere ./run builds.
bool isSynopsis(const std::string& arguments) {
    static const std::regex comment(R"(\s#.*)"), places(R"(\.\.\.|…|\[| \| |\b[A-Z]{3,}\b)");
    const std::string bare = std::regex_replace(arguments, comment, "");
    return std::regex_search(bare, places) || bare.find_first_not_of(' ') == std::string::npos;
}

class FxrenderDocs : public FxrenderTest {
protected:
    /// The pictures that the documents speak of.
    void SetUp() override {
        for (const char* name : {"shots", "out", "in"}) ASSERT_TRUE(QDir(folder()).mkdir(name));
        for (const QString name : {"photo.png", "noisy.png", "stained.png", "page.png", "mask.png",
                                   "in.png", "in/a.png", "shots/shot_0007.png"})
            save(picture(3, 64, 48), name);
        saveSequence(3);
        // The toolkit writes no TIFF.
        for (const char* name : {"cells.tif", "nuclei_0002.tif"})
            apply({"photo.png", "-o", name, "-q", "-f", "Channel separation"});
    }

    /// Runs what the document shows and returns how many commands that were.
    int runCommandsOf(const QString& document) {
        QFile file(document);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << document.toStdString();
        static const std::regex continuation("\\\\\n");
        std::istringstream lines(
            std::regex_replace(file.readAll().toStdString(), continuation, " "));
        // With a prompt, the lines below are what the command says; they may break off with dots.
        static const std::regex command(R"((\$ )?(fxrender|\./run)( .*))");
        bool inBlock = false, saysSomething = false;
        int count = 0;
        ProgramResult result;
        for (std::string line; std::getline(lines, line);) {
            SCOPED_TRACE(document.toStdString() + ": " + line);
            std::smatch match;
            if (line.compare(0, 3, "```") == 0) {
                inBlock = !inBlock;
                saysSomething = false;
            } else if (inBlock && std::regex_match(line, match, command)) {
                if (isSynopsis(match[3])) continue;
                saysSomething = match[1].matched;
                result =
                    RunningProgram({"/bin/sh", "-c", FXRENDER + match[3].str()}, folder()).wait();
                EXPECT_TRUE(result.exitCode == 0 || saysSomething) << result.err;
                ++count;
            } else if (saysSomething) {
                EXPECT_THAT(result.out + result.err,
                            testing::HasSubstr(line.substr(0, line.find("…"))));
            }
        }
        return count;
    }
};

TEST_F(FxrenderDocs, EveryCommandDoesWhatIsSaid) {
    int count = runCommandsOf(FX_SOURCE_FOLDER "/README.md");
    QDirIterator documents(FX_SOURCE_FOLDER "/docs", {"*.md"}, QDir::Files,
                           QDirIterator::Subdirectories);
    while (documents.hasNext()) count += runCommandsOf(documents.next());
    EXPECT_GE(count, 9);
}

}  // namespace
