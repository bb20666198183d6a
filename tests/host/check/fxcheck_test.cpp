// The program that checks plug-ins, on good ones and on some that break one promise each.
#include <gmock/gmock.h>

#include "tests/host/render/Program.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Fxcheck : public FxrenderTest {
protected:
    ProgramResult check(const std::string& plugin) { return program({FXCHECK, plugin}); }
};

/// The rows of a table that hold `text`.
std::vector<std::string> rowsWith(const std::string& text, const std::string& table) {
    std::vector<std::string> rows;
    for (const std::string& line : linesOf(table))
        if (line.find(text) != std::string::npos) rows.push_back(line);
    return rows;
}

}  // namespace

TEST_F(Fxcheck, GoodPluginsPass) {
    for (const std::string& plugin : {pluginCalled("good"), std::string(OWN_PLUGIN)}) {
        const ProgramResult result = check(plugin);
        EXPECT_EQ(result.exitCode, 0) << result.out;
        EXPECT_EQ(result.err, "");
        EXPECT_THAT(rowsWith("BROKEN", result.out), ElementsAre());
        EXPECT_EQ(rowsWith("  kept", result.out).size() % 12, 0u) << result.out;
    }
}

TEST_F(Fxcheck, BrokenPromisesAreNamed) {
    const struct {
        const char* library;
        std::vector<const char*> rows;
    } plugins[] = {{"NullBecomesPicture", {"null image"}},
                   {"IgnoresSwitch", {"unknown instance", "disabled"}},
                   {"RefusesTwoChannels", {"1 to 4 channels"}},
                   {"LooksOutside", {"regions"}},
#ifndef __SANITIZE_THREAD__  // which ends it at the race that is its fault
                   {"Remembers", {"order of frames", "threads", "short memory"}},
#endif
                   {"ShowsNothing", {"page and undo"}},
                   {"StepZero",
                    {"1 to 4 channels", "odd sizes", "regions", "order of frames", "threads",
                     "short memory"}}};
    for (const auto& plugin : plugins) {
        SCOPED_TRACE(plugin.library);
        const ProgramResult result = check(pluginCalled(plugin.library));
        EXPECT_EQ(result.exitCode, 1) << result.err;
        const std::vector<std::string> broken = rowsWith("BROKEN", result.out);
        ASSERT_EQ(broken.size(), plugin.rows.size()) << result.out;
        for (std::size_t i = 0; i < broken.size(); ++i)
            EXPECT_THAT(broken[i], HasSubstr(plugin.rows[i]));
    }
}

TEST_F(Fxcheck, WhatEndsItIsNamedWithItsPromise) {
    const ProgramResult crash = check(pluginCalled("abort-process"));
    EXPECT_EQ(crash.exitCode, 65);
    EXPECT_THAT(crash.err, HasSubstr("First, null image: it ended the program with signal 6"));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // which have their own heap
    const ProgramResult memory = check(pluginCalled("TrustsMemory"));
    EXPECT_EQ(memory.exitCode, 65);
    EXPECT_THAT(memory.err, HasSubstr("First, short memory: it ended the program with signal 11"));
#endif
    EXPECT_EQ(check(pluginCalled("NoKeys")).exitCode, 65);
    EXPECT_EQ(check("nowhere.so").exitCode, 66);
    EXPECT_EQ(check("--help").exitCode, 2);
}
