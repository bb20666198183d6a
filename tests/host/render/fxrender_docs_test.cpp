// Every command that a fenced block of the documents shows is run, as it stands there.
#include <gmock/gmock.h>

#include <QDirIterator>
#include <regex>
#include <sstream>

#include "tests/host/render/Program.h"

namespace {

struct Command {
    std::string text;
    std::vector<std::string> output;  ///< the lines shown below it
};

/// Lines "fxrender ...", "./run ..." or "$ fxrender ..." with what continues them.
std::vector<Command> commandsIn(const QString& document) {
    QFile file(document);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << document.toStdString();
    std::istringstream lines(file.readAll().toStdString());
    static const std::regex start(R"((\$ )?(fxrender|\./run)( .*))");
    std::vector<Command> commands;
    bool inBlock = false, continued = false, showsOutput = false;
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (line.compare(0, 3, "```") == 0) {
            inBlock = !inBlock;
            showsOutput = false;
        } else if (inBlock && continued) {
            commands.back().text += '\n' + line;
        } else if (inBlock && std::regex_match(line, match, start)) {
            commands.push_back({FXRENDER + match[3].str(), {}});
            showsOutput = match[1].matched;
        } else if (inBlock && showsOutput) {
            commands.back().output.push_back(line);
        }
        continued = inBlock && !commands.empty() && !line.empty() && line.back() == '\\';
    }
    return commands;
}

/// A synopsis has places to fill in: dots, alternatives, words in capitals. A mere ./run builds.
bool isSynopsis(const std::string& command) {
    static const std::regex comment(R"(\s#.*)"), places(R"(\.\.\.|…|\[| \| |\b[A-Z]{3,}\b)");
    const std::string bare = std::regex_replace(command.substr(sizeof FXRENDER - 1), comment, "");
    return std::regex_search(bare, places) || bare.find_first_not_of(' ') == std::string::npos;
}

class FxrenderDocs : public FxrenderTest {
protected:
    /// The pictures that the documents speak of.
    void SetUp() override {
        for (const char* name : {"shots", "out", "in"}) ASSERT_TRUE(QDir(folder()).mkdir(name));
        for (const char* name : {"photo.png", "in.png", "in/a.png"}) save(picture(3, 64, 48), name);
        for (int frame = 0; frame < 3; ++frame) {
            save(picture(frame, 64, 48), shot(frame));
            save(picture(frame, 64, 48), "shots/" + shot(frame));
        }
        // The toolkit writes no TIFF.
        for (const char* name : {"cells.tif", "nuclei_0002.tif"})
            fxrender({"apply", "photo.png", "-o", name, "-q", "-f", "Channel separation"});
    }
};

TEST_F(FxrenderDocs, EveryCommandDoesWhatIsSaid) {
    QStringList documents = {FX_SOURCE_FOLDER "/README.md"};
    QDirIterator walk(FX_SOURCE_FOLDER "/docs", {"*.md"}, QDir::Files);
    while (walk.hasNext()) documents.append(walk.next());
    int run = 0;
    for (const QString& document : documents)
        for (const Command& command : commandsIn(document)) {
            if (isSynopsis(command.text)) continue;
            SCOPED_TRACE(document.toStdString() + ": " + command.text);
            const ProgramResult result =
                RunningProgram({"/bin/sh", "-c", command.text}, folder()).wait();
            const std::string said = result.out + result.err;
            for (const std::string& line : command.output)  // which may break off with ...
                EXPECT_THAT(said, testing::HasSubstr(line.substr(0, line.find("…"))));
            EXPECT_TRUE(result.exitCode == 0 || !command.output.empty()) << said;
            ++run;
        }
    EXPECT_GE(run, 9);
}

}  // namespace
