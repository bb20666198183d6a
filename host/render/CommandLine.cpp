#include "host/render/CommandLine.h"

#include <CLI/CLI.hpp>
#include <QStringList>
#include <map>

#include "host/document/NearestName.h"
#include "host/media/sample_range.h"
#include "host/render/CommandOptions.h"
#include "host/render/ExitCode.h"
#include "host/render/Manual.h"
#include "host/render/ProjectFile.h"

namespace render {

namespace {

const char kIntroduction[] = "Applies the filters of an image filter plug-in to pictures.";

OptionDescription describe(const CLI::Option& option) {
    OptionDescription description;
    for (const std::string& name : option.get_snames()) description.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) description.names.push_back("--" + name);
    description.isArgument = description.names.empty();
    if (description.isArgument) description.names.push_back(option.get_name());
    if (option.get_items_expected_max() > 0) description.value = option.get_type_name();
    description.about = option.get_description();
    description.isRequired = option.get_required();
    description.isRepeated = option.get_items_expected_max() > 1;
    return description;
}

CommandDescription describe(const CLI::App& command) {
    CommandDescription description = {
        command.get_name(), command.get_description(), command.get_footer(), {}};
    for (const CLI::Option* option : command.get_options())
        if (!option->get_group().empty()) description.options.push_back(describe(*option));
    return description;
}

/// An empty value is a variable of a script that was not set: it never means "none" or "all".
void refuseEmptyValues(const CLI::App& command) {
    for (const CLI::Option* option : command.get_options())
        for (const std::string& value : option->results())
            if (value.empty())
                throw UsageError(option->get_name() +
                                 ": the value is empty; give one, or leave the option out");
}

bool isSvgName(const std::string& path) {
    return QString::fromStdString(path).endsWith(QLatin1String(".svg"), Qt::CaseInsensitive);
}

/// Filters come from the command line or from a project.
void requireChain(const CLI::App& command, const Selection& selection) {
    if (!command.get_option_no_throw("--filter") || !selection.filters.empty()) return;
    if (selection.inputs.size() != 1 || !isProjectName(selection.inputs.front()))
        throw UsageError("--filter is required, unless the input is one project (*.fxp)");
}

/// "-" stands for standard output only where a text is written.
void refuseStandardStreams(const CommandLine& commandLine) {
    const auto refuse = [](const std::string& option, const std::string& value) {
        if (value == "-")
            throw UsageError(option +
                             ": pictures are not written to standard output; name a file, a "
                             "numbered sequence such as out_####.png or a folder");
    };
    refuse("--output", commandLine.apply.output);
    refuse("--output", commandLine.verify.output);
    for (const std::string& output : {commandLine.sheet.output, commandLine.compare.output})
        refuse("--output", output);
    for (const std::string& plot : {commandLine.apply.plot, commandLine.count.plot})
        if (!plot.empty() && !isSvgName(plot))
            throw UsageError("--plot: " + plot + " is not named as what it is; write NAME.svg");
    refuse("--labels", commandLine.count.labels);
    refuse("--outlines", commandLine.count.outlines);
}

QStringList commandNames(const CLI::App& app) {
    QStringList names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.append(QString::fromStdString(command->get_name()));
    return names;
}

std::string validCommands(const CLI::App& app) {
    return "valid: " + commandNames(app).join(QStringLiteral(", ")).toStdString();
}

QStringList validWords(const CLI::App& app) {
    QStringList words = commandNames(app);
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames())
            words.append(QString::fromStdString("--" + name));
        for (const std::string& name : option->get_snames())
            words.append(QString::fromStdString("-" + name));
    }
    return words;
}

/// The command that was being parsed when the error came up.
const CLI::App& activeCommand(const CLI::App& app) {
    const auto commands = app.get_subcommands();
    return commands.empty() ? app : *commands.front();
}

[[noreturn]] void refuseUnknownWord(const CLI::App& app) {
    const CLI::App& command = activeCommand(app);
    const std::vector<std::string> unknown = app.remaining(true);
    const std::string word = unknown.empty() ? std::string() : unknown.front();
    const std::string bare = word.substr(0, word.find('='));
    const bool isOption = word.size() > 1 && word.front() == '-';
    const bool isCommand = !isOption && &command == &app;
    const std::string program = &command == &app ? "fxrender" : "fxrender " + command.get_name();
    if (!isOption && !isCommand) throw UsageError(program + " has no use for " + bare);

    const QString nearest =
        document::nearestName(QString::fromStdString(bare), validWords(command));
    const std::string advice = !nearest.isNull() ? "did you mean " + nearest.toStdString() + "?"
                               : isCommand       ? validCommands(app)
                                                 : program + " --help shows those there are";
    throw UsageError(std::string("there is no ") + (isOption ? "option " : "command ") + bare +
                     "; " + advice);
}

}  // namespace

media::SampleRange parseRange(const std::string& text) {
    const auto range = media::sampleRangeFromText(text);
    if (!range)
        throw UsageError("--range: cannot use \"" + text +
                         "\"; write LO-HI with LO below HI, such as 0-4095, or auto, or each");
    return *range;
}

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine result;
    // For shells and for the build: not for people, and not among the commands.
    if (!arguments.empty() && arguments.front() == "complete") {
        result.command = CommandLine::Complete;
        result.typed.assign(arguments.begin() + 1, arguments.end());
        return result;
    }
    if (arguments == std::vector<std::string>{"manual"}) {
        result.text = manualText(describeCommands());
        return result;
    }
    CLI::App app(kIntroduction, "fxrender");
    ApplyOptions project;
    defineCommands(app, result, project);

    std::vector<std::string> backwards(arguments.rbegin(), arguments.rend());
    for (std::string& argument : backwards) {
        // The parser takes [...] for a list of values; here it can only be the name of a file.
        if (argument.size() > 1 && argument.front() == '[' && argument.back() == ']')
            argument.insert(0, "./");
    }
    try {
        app.parse(backwards);
    } catch (const CLI::CallForHelp&) {
        result.text = app.help();
        return result;
    } catch (const CLI::CallForVersion&) {
        result.text = versionText();
        return result;
    } catch (const CLI::ExtrasError&) {
        refuseUnknownWord(app);
    } catch (const CLI::ParseError& error) {
        // A missing argument may be the consequence of a misspelt option: say that first.
        if (!app.remaining(true).empty()) refuseUnknownWord(app);
        throw UsageError(error.what());
    }
    if (app.get_subcommands().empty()) throw UsageError("no command given; " + validCommands(app));
    refuseEmptyValues(activeCommand(app));
    if (app.got_subcommand("render")) result.apply = project;
    refuseStandardStreams(result);
    const std::map<std::string, CommandLine::Command> commands = {
        {"list", CommandLine::List},      {"apply", CommandLine::Apply},
        {"count", CommandLine::Count},    {"check", CommandLine::Check},
        {"render", CommandLine::Apply},   {"save", CommandLine::Save},
        {"verify", CommandLine::Verify},  {"sheet", CommandLine::Sheet},
        {"compare", CommandLine::Compare}};
    result.command = commands.at(activeCommand(app).get_name());
    if (result.command == CommandLine::Count) requireChain(activeCommand(app), result.count);
    if (result.command == CommandLine::Check) requireChain(activeCommand(app), result.check);
    if (result.command == CommandLine::Verify) requireChain(activeCommand(app), result.verify);
    return result;
}

std::vector<CommandDescription> describeCommands() {
    CommandLine unused;
    ApplyOptions unusedProject;
    CLI::App app(kIntroduction, "fxrender");
    defineCommands(app, unused, unusedProject);
    std::vector<CommandDescription> descriptions = {describe(app)};
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        descriptions.push_back(describe(*command));
    return descriptions;
}

QStringList asQStrings(const std::vector<std::string>& texts) {
    QStringList list;
    for (const std::string& text : texts) list.append(QString::fromStdString(text));
    return list;
}

std::string shortUsage() {
    return "fxrender applies the filters of an image filter plug-in to pictures.\n"
           "\n"
           "  fxrender list                                     what filters there are\n"
           "  fxrender list KEY                                 what a filter's parameters mean\n"
           "  fxrender apply INPUT... -o OUTPUT -f FILTER ...   apply filters to pictures\n"
           "  fxrender count INPUT... -f FILTER ...             count and measure objects\n"
           "  fxrender check INPUT... -f FILTER ...             what would go wrong, nothing "
           "rendered\n"
           "  fxrender save PROJECT INPUT... -f FILTER ...      write a project\n"
           "  fxrender render PROJECT -o OUTPUT                 render it; also count, check\n"
           "  fxrender verify PROJECT -o OUTPUT                 what is missing, stale or damaged\n"
           "  fxrender sheet INPUT -o OUTPUT --over SWEEP ...   one frame, several values\n"
           "  fxrender compare A B                              how pictures differ\n"
           "  fxrender apply --help                             all options, and examples\n";
}

}  // namespace render
