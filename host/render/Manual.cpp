#include "host/render/Manual.h"

namespace render {

namespace {

/// A text without the signs that scdoc takes for its own.
std::string plain(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '_' || c == '*' || c == '\\' || c == '[' || c == '#' || c == '<') result += '\\';
        result += c;
    }
    return result;
}

std::string bold(const std::string& text) {
    return '*' + plain(text) + '*';
}

std::string underlined(const std::string& text) {
    return '_' + plain(text) + '_';
}

std::string asWritten(const OptionDescription& option) {
    if (option.isArgument) return underlined(option.names.front());
    std::string text;
    for (const std::string& name : option.names) text += (text.empty() ? "" : ", ") + bold(name);
    if (!option.value.empty()) text += ' ' + underlined(option.value);
    return text;
}

/// What cannot be left out: arguments and required options.
std::string synopsis(const CommandDescription& command) {
    std::string text = bold("fxrender " + command.name);
    for (const bool wantsArguments : {true, false}) {
        for (const OptionDescription& option : command.options) {
            if (option.isArgument != wantsArguments) continue;
            if (!option.isArgument && !option.isRequired) continue;
            std::string word = option.isArgument
                                   ? underlined(option.names.front())
                                   : bold(option.names.front()) + ' ' + underlined(option.value);
            if (option.isRepeated) word += "...";
            text += option.isRequired ? ' ' + word : " \\[" + word + ']';
        }
    }
    return text + " \\[options]";
}

/// Lines as they stand.
std::string literal(const std::string& lines) {
    std::string text;
    for (const char c : lines) text += c == '\\' ? std::string("\\\\") : std::string(1, c);
    return "```\n" + text + "\n```\n\n";
}

}  // namespace

std::string manualText(const std::vector<CommandDescription>& commands) {
    const CommandDescription& program = commands.front();
    std::string text =
        "fxrender(1)\n\n# NAME\n\nfxrender - applies image filters to pictures\n\n# SYNOPSIS\n\n";
    for (std::size_t i = 1; i < commands.size(); ++i)
        text += synopsis(commands[i]) + (i + 1 < commands.size() ? "++\n" : "\n\n");
    text += "# DESCRIPTION\n\n" + plain(program.about) +
            " It needs no display, keeps its results off the error stream and its messages off the "
            "output stream, and gives the same bytes however many jobs it runs on. *fxrender list* "
            "shows what filters there are.\n\n# OPTIONS\n\n";
    const auto addOptions = [&text](const CommandDescription& command) {
        for (const OptionDescription& option : command.options)
            text += asWritten(option) + "\n\t" + plain(option.about) + "\n\n";
    };
    addOptions(program);
    text += "# COMMANDS\n\n";
    for (std::size_t i = 1; i < commands.size(); ++i) {
        text += "## fxrender " + commands[i].name + "\n\n" + plain(commands[i].about) + ".\n\n";
        addOptions(commands[i]);
        if (!commands[i].notes.empty()) text += literal(commands[i].notes);
    }
    return text +
           "# SEE ALSO\n\n*fxcheck* PLUGIN.so tells whether a plug-in library keeps the "
           "contract.\n";
}

}  // namespace render
