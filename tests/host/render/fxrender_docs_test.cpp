// Every command that a fenced block of the documents shows is run, as it stands there.
#include <gmock/gmock.h>

#include <QDirIterator>
#include <QLocale>
#include <limits>
#include <regex>
#include <sstream>

#include "host/document/Project.h"
#include "host/kernel/PluginGuard.h"
#include "host/media/FrameTemplate.h"
#include "host/media/PictureLimits.h"
#include "host/media/formats/Format.h"
#include "host/render/CommandLine.h"
#include "host/render/SheetCommand.h"
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
        apply({"shot_####.png", "-o", "clip.mp4", "-q", "-f", "Blur and enhance"});
    }

    /// Runs what the document shows and returns how many commands that were.
    int runCommandsOf(const QString& document) {
        QFile file(document);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << document.toStdString();
        static const std::regex continuation("\\\\\n");
        std::istringstream lines(
            std::regex_replace(file.readAll().toStdString(), continuation, " "));
        // ./run editor waits for somebody to close it. With a prompt, the lines below are what the
        // command says; they may break off with dots.
        static const std::regex command(R"((\$ )?(fxrender|\./run(?! editor))( .*))");
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
                result = program({"/bin/sh", "-c", FXRENDER + match[3].str()});
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

TEST(LimitsDocument, HasEveryLimitAsItIs) {
    QFile file(FX_SOURCE_FOLDER "/docs/limits.md");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::string text = file.readAll().toStdString();
    const document::ProjectLimits& project = document::kProjectLimits;
    const struct {
        const char* name;
        std::int64_t most;
        const char* unit;
    } rows[] = {
        {"side of a picture or video that is read", media::kPictureLimits.side, " pixels"},
        {"picture or video that is read", media::kPictureLimits.pixels, " pixels"},
        {"pages of one TIFF file together", media::kPictureLimits.pageBytes >> 30, " GiB"},
        {"size of a project", project.bytes >> 20, " MiB"},
        {"from one `<` of a project to the next", project.tagBytes >> 10, " KiB"},
        {"levels of elements of a project", project.depth, ""},
        {"attributes of one element of a project", project.attributes, ""},
        {"elements of a project, keys among them", project.elements, ""},
        {"filters of a project", project.filters, ""},
        {"digits of the number in a file pattern; a name with more is that of one file",
         media::kMostFrameDigits, ""},
        {"frames worked on at once, `--jobs`", render::kMostJobs, ""},
        {"pictures of a sheet", render::kMostSheetPictures, ""},
        {"objects of a label picture", std::numeric_limits<std::uint16_t>::max(), ""},
        {"a step of loading a library named with `--plugin`, asking for a filter's page, unloading "
         "it",
         kUsualPluginSeconds, " seconds"},
    };
    const auto line = [](const std::string& name, std::int64_t most, const char* unit) {
        const QString number = QLocale(QLocale::English).toString(static_cast<qlonglong>(most));
        return "\n| " + name + " | " + number.toStdString() + unit + " |\n";
    };
    for (const auto& row : rows) {
        const std::string expected = line(row.name, row.most, row.unit);
        EXPECT_THAT(text, testing::HasSubstr(expected));
    }
    for (const media::formats::Format& format : media::formats::all()) {
        if (!format.encode) continue;
        const bool isJpeg = format.name == std::string("JPEG");
        EXPECT_THAT(text,
                    testing::HasSubstr(line(isJpeg ? "side of a picture written as JPEG"
                                                   : "side of a picture written in another format",
                                            format.largestSide, " pixels")))
            << format.name;
    }
    const std::size_t tableRows = std::size(rows) + 2;  // and the two of what is written
    const std::regex rowPattern("\\n\\| [^-|][^|]*\\| [0-9,]+");
    const std::sregex_iterator first(text.begin(), text.end(), rowPattern), last;
    EXPECT_EQ(static_cast<std::size_t>(std::distance(first, last)), tableRows);
}

}  // namespace
