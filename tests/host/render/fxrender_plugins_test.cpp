// Plug-in libraries that do their worst: the program ends with a line that says what happened, or
// works; it never ends by a signal, nor with 0 and nothing done.
#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <QFile>

#include "tests/host/render/Program.h"

namespace {

class FxrenderPlugins : public FxrenderTest {
protected:
    void SetUp() override {
        save(picture(1), "in.png");
        // What a library leaves behind that breaks off is not the program's to free.
        qputenv("ASAN_OPTIONS", "detect_leaks=0");
    }
    void TearDown() override { qunsetenv("ASAN_OPTIONS"); }

    static Arguments listing(const std::string& plugin) {
        return {"list", "--json", "--plugin", plugin};
    }
    static Arguments applying(const std::string& plugin) {
        return {"apply", "in.png", "-o", "out.png", "-f", "First", "-q", "--plugin", plugin};
    }

    /// One line, code 65, and no file beside those that were there.
    void expectBlamed(const Arguments& arguments, const std::vector<std::string>& reasons) {
        const QStringList before = files();
        const ProgramResult result = fxrender(arguments);
        for (const std::string& reason : reasons) expectRefused(result, 65, reason);
        EXPECT_EQ(files(), before);
    }
};

}  // namespace

TEST_F(FxrenderPlugins, EndTheirOwnProcessOnly) {
    struct Deed {
        const char* name;
        const char* reason;
    };
    const Deed deeds[] = {
        {"exit0", "ended the program with exit code 0"},
        {"exit3", "ended the program with exit code 3"},
        {"leave", "ended the program with exit code 0"},
        {"abort", "ended the program with signal 6"},
        {"kill", "ended the program with signal 9"},
        {"stopped", "ended the program with signal 15"},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they end it their way
        {"crash", "ended the program with signal 11"},
        {"recurse", "ended the program with signal 11"},
#endif
        {"text", "a text"},
        {"number", ""}
    };
    const struct {
        const char* name;
        const char* step;  ///< of loading; null: it is reached when filters are applied
    } places[] = {
#ifndef __SANITIZE_THREAD__  // it does not look while a library is loaded, nor bears an end there
        {"initialiser", "load the library"},
#endif
        {"question", "verification text"},
        {"object", "make the root object"},
        {"keys", "ask for the filter keys"},
        {"create", "make the filter"},
        {"register", "register the filter"},
        {"filter", nullptr},
        {"process", nullptr}};
    for (const auto& place : places)
        for (const Deed& deed : deeds) {
            const std::string word = deed.name;
            // While filters are applied this is a stranger's wish to stop.
            if (word == "stopped" && !place.step) continue;
            const std::string name = word + '-' + place.name;
            SCOPED_TRACE(name);
            const std::string plugin = pluginCalled(name);
            expectBlamed(place.step ? listing(plugin) : applying(plugin),
                         {deed.reason, place.step ? place.step : ""});
            QFile::remove(QString::fromStdString(plugin));
        }
}

TEST_F(FxrenderPlugins, AreNotWaitedForWithoutEnd) {
    qputenv("FX_PLUGIN_SECONDS", "1");
    const struct {
        const char* name;
        const char* step;
    } rows[] = {{"sleep-initialiser", "load the library"},
                {"loop-object", "make the root object"},
                {"sleep-create", "make the filter \"First\""},
                {"loop-register", "register the filter \"First\""},
                {"sleep-page", "ask the page of the filter \"First\""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        expectBlamed(
            listing(pluginCalled(row.name)),
            {std::string(row.step) + ": it did not return within 1 s", "FX_PLUGIN_SECONDS"});
    }
    expectBlamed(applying(pluginCalled("sleep-filter")),
                 {"make the per-frame filter of", "it did not return within 1 s"});
    const std::pair<const char*, const char*> afterwards[] = {
        {"loop-destroy", "remove the per-frame filters"}, {"sleep-end", "remove its filters"}};
    for (const auto& [name, step] : afterwards) {
        expectRefused(fxrender(applying(pluginCalled(name))), 65,
                      std::string(step) + ": it did not return within 1 s");
        EXPECT_TRUE(QFile::remove(path("out.png")));
    }
    // All is done by then.
    const ProgramResult result = fxrender(applying(pluginCalled("sleep-finaliser")));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(load("out.png"), load("in.png"));
    qunsetenv("FX_PLUGIN_SECONDS");
}

TEST_F(FxrenderPlugins, GivePicturesThatCannotBe) {
    const struct {
        const char* library;
        const char* reason;
    } rows[] = {{"GivesNothing", "gave no picture"},
                {"GivesEmptyPicture", "no pixels"},
                {"NullData", "no pixels"},
                {"StepZero", "step"},
                {"StepNegative", "step"},
                {"StepShort", "step"},
                {"StepLong", "memory it owns"},
                {"RegionWider", "region larger than itself"},
                {"RegionHigher", "region larger than itself"},
                {"RegionEmpty", "region"},
                {"RegionNegative", "region"},
                {"WidthZero", "side below 1"},
                {"WidthHuge", "step"},
                {"HeightNegative", "side below 1"},
                {"HeightHuge", "more bytes"},
                {"HeightMore", "memory it owns"},
                {"ChannelsNone", "channel count"},
                {"ChannelsFive", "channel count"},
                {"ChannelsNegative", "channel count"},
                {"NoFilter", "cannot be made"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.library);
        expectBlamed(applying(pluginCalled(row.library)), {row.reason});
    }
}

TEST_F(FxrenderPlugins, WhatTheyDoAfterTheWorkTakesNothingAway) {
    const std::string good = pluginCalled("good");
    const ProgramResult list = fxrender(listing(good));
    EXPECT_EQ(list.exitCode, 0) << list.err;
    EXPECT_EQ(nlohmann::json::parse(list.out)["filters"].size(), 1u);
    for (const char* name :
         {"exit0-finaliser", "abort-finaliser", "abort-end", "exit3-end", "leave-destroy"}) {
        SCOPED_TRACE(name);
        const ProgramResult result = fxrender(applying(pluginCalled(name)));
        EXPECT_THAT(result.exitCode, testing::AnyOf(0, 65)) << result.err;
        EXPECT_EQ(result.exitCode == 0, result.err.empty()) << result.err;
        EXPECT_EQ(load("out.png"), load("in.png"));
        QFile::remove(path("out.png"));
    }
}

TEST_F(FxrenderPlugins, StopWhenTheirStarterIsStopped) {
    save(picture(2, 1200, 900), shot(0));
    for (int i = 1; i < 60; ++i) ASSERT_TRUE(QFile::link(path(shot(0)), path(shot(i))));
    const std::string plugin = pluginCalled("good");
    const Arguments arguments = {FXRENDER, "apply", "shot_####.png", "-o", "out/",     "-f",
                                 "First",  "-q",    "--jobs",        "1",  "--plugin", plugin};
    RunningProgram program(arguments, folder());
    waitFor("out/" + shot(1));
    program.send(SIGTERM);
    const ProgramResult result = program.wait();
    EXPECT_EQ(result.exitCode, 143) << result.err;
    EXPECT_FALSE(QFile::exists(path("out/" + shot(59))));
}
