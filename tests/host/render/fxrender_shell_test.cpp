// What a shell knows of fxrender: completion and the manual page.
#include <gmock/gmock.h>

#include <regex>
#include <set>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Words = std::vector<std::string>;

class FxrenderShell : public FxrenderTest {
protected:
    /// What the program tells bash to put in the place of the piece of the word at the line's end.
    Words offered(const std::string& line) {
        const ProgramResult result =
            fxrender({"complete", "bash", FXRENDER " " + line, " \t\n\"'><=;|&(:"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return linesOf(result.out.substr(result.out.find('\n')));
    }
};

TEST_F(FxrenderShell, BashIsGivenWhatTheProgramOffers) {
    for (const std::string& line : Words{"", "check --pl", "apply a.png -f Degauss:Method=",
                                         "apply a.png -f \"Blur and enhance:", "apply "}) {
        const std::string typed = FXRENDER " " + line;
        const ProgramResult result = program(
            {"/bin/bash", "--norc", "-c",
             "source " COMPLETION "/fxrender.bash; complete -p fxrender >/dev/null || exit 9; "
             "COMP_LINE=$1 COMP_POINT=${#1} COMP_WORDBREAKS=$' \\t\\n\"\\'><=;|&(:' "
             "COMP_WORDS=(" FXRENDER ") COMP_CWORD=1; _fxrender; "
             "(( ${#COMPREPLY[@]} )) && printf '%s\\n' \"${COMPREPLY[@]}\"; exit 0",
             "bash", typed});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(linesOf(result.out), offered(line)) << line;
    }
}

TEST_F(FxrenderShell, OffersWhatTheCommandsHave) {
    const std::string help = fxrender({"--help"}).out;
    const Words commands = offered("");
    EXPECT_THAT(commands, Contains("apply"));
    for (const std::string& command : commands) {
        EXPECT_THAT(help, HasSubstr("\n  " + command + " "));
        // The very options that the command's help shows.
        const std::string text = fxrender({command, "--help"}).out;
        const std::string options = text.substr(0, text.find("FILTER   KEY"));
        static const std::regex option("\n  (-., *)?(--[a-z-]+)");
        std::set<std::string> expected;
        for (std::sregex_iterator i(options.begin(), options.end(), option), end; i != end; ++i)
            expected.insert((*i)[2]);
        const Words found = offered(command + " --");
        EXPECT_EQ(std::set<std::string>(found.begin(), found.end()), expected) << command;
        EXPECT_GE(found.size(), 3u) << command;
    }
    EXPECT_THAT(offered("no"), IsEmpty());
    EXPECT_THAT(offered("apply in.png --progress "),
                ElementsAre("auto", "bar", "plain", "json", "none"));
    EXPECT_THAT(offered("apply in.png --progress=p"), ElementsAre("plain"));
    EXPECT_THAT(offered("apply "), IsEmpty()) << "names of files are the shell's own";
}

TEST_F(FxrenderShell, OffersFiltersTheirParametersAndValues) {
    const json list = json::parse(fxrender({"list", "--json"}).out);
    const Words keys = offered("apply in.png -f \"");
    ASSERT_EQ(keys.size(), list["filters"].size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const json& filter = list["filters"][i];
        EXPECT_EQ(keys[i], filter["key"]);
        const Words names = offered("check in.png -f \"" + keys[i] + ":");
        ASSERT_EQ(names.size(), filter["parameters"].size());
        for (std::size_t p = 0; p < names.size(); ++p) {
            const json& parameter = filter["parameters"][p];
            EXPECT_EQ(names[p], keys[i] + ":" + parameter["name"].get<std::string>() + "=");
            if (!parameter.contains("choices")) continue;
            Words texts;
            for (const json& choice : parameter["choices"])
                texts.push_back(names[p] + choice["text"].get<std::string>());
            EXPECT_EQ(offered("check in.png -f \"" + names[p]), texts);
        }
    }
    // Quoted as it was begun; without quotes bash breaks words at : and =.
    EXPECT_THAT(offered("apply a.png -f bl"), ElementsAre("Blur\\ and\\ enhance"));
    EXPECT_THAT(offered("apply a.png -f 'bl"), ElementsAre("Blur and enhance"));
    EXPECT_THAT(offered("apply a.png -f Blur\\ and\\ enhance:B"), ElementsAre("Blur="));
    EXPECT_THAT(offered("apply a.png -f \"Blur and enhance\":B"), ElementsAre("Blur="));
    EXPECT_THAT(offered("apply a.png -f Degauss:Method="), ElementsAre("FFT", "LR"));
    EXPECT_THAT(offered("apply a.png -f Degauss:Method=LR,th"), ElementsAre("LR,Threshold="));
    EXPECT_THAT(offered("apply a.png -f 'Degauss:Method=LR,"),
                ElementsAre("Degauss:Method=LR,Enabled=", "Degauss:Method=LR,Threshold="));
    EXPECT_THAT(offered("sheet a.png --over Degauss:Method=LR,"), ElementsAre("LR,FFT", "LR,LR"));
    EXPECT_THAT(offered("apply a.png -f \"Blur and enhance:Blur=0=1;20=1"),
                Contains(HasSubstr("=13")));
    EXPECT_THAT(offered("apply a.png -f Nothing:"), IsEmpty());
    EXPECT_THAT(offered("list dega"), ElementsAre("Degauss"));
}

TEST_F(FxrenderShell, ZshOffersTheSame) {
    const auto zsh = [this](const std::string& words, const std::string& prefix) {
        // The functions of its completion say what they are given.
        const ProgramResult result = program(
            {"/usr/bin/env", "zsh", "-f", "-c",
             "compadd() { print -rl -- \"$texts[@]\" }; _files() { print files }; compset() { }; "
             "words=(" FXRENDER " " +
                 words +
                 " \"$1\"); CURRENT=$#words; PREFIX=$1; "
                 "source " COMPLETION "/_fxrender",
             "zsh", prefix});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return linesOf(result.out);
    };
    EXPECT_EQ(zsh("count", "--"), offered("count --"));
    EXPECT_EQ(zsh("apply a.png -f", "Blur and enhance:"),
              offered("apply a.png -f 'Blur and enhance:"));
    EXPECT_THAT(zsh("apply", ""), ElementsAre("files"));
}

TEST_F(FxrenderShell, TheManualTellsEveryOptionAndReadsWithoutComplaint) {
    const ProgramResult page = program({"/bin/sh", "-c",
                                        FXRENDER " manual | scdoc > fxrender.1 && "
                                                 "MANWIDTH=120 man --warnings -l fxrender.1"});
    EXPECT_EQ(page.exitCode, 0);
    EXPECT_EQ(page.err, "");
    for (const std::string& command : offered("")) {
        EXPECT_THAT(page.out, HasSubstr("fxrender " + command));
        for (const std::string& option : offered(command + " --"))
            EXPECT_THAT(page.out, HasSubstr(option));
    }
    EXPECT_THAT(page.out, HasSubstr("Channel=L\" \\\n")) << "lines that go on";
}

}  // namespace
