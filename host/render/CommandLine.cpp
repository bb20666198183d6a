#include "host/render/CommandLine.h"

#include <CLI/CLI.hpp>
#include <QStringList>
#include <algorithm>
#include <map>

#include "host/document/NearestName.h"

namespace render {

namespace {

const char kIntroduction[] = "Applies the filters of an image filter plug-in to pictures.";

const char kApplyNotes[] =
    R"(FILTER   KEY or KEY:Name=VALUE,Name=VALUE...  (fxrender list shows what there is)
VALUE    a number, true or false; over time keys such as "0=1;20|=5;40=9":
         FRAME=VALUE runs in a line to the next key, FRAME|=VALUE holds until it
INPUT    a picture, several pictures, a numbered sequence (shot_####.png,
         shot_%04d.png), a folder or a video
OUTPUT   a picture, a numbered sequence, a folder or a video (.mp4, .mov, .mkv);
         never one of the inputs
LIST     single frames, ranges, steps: 1,5,10-20:2  -5  -10--5  100-

Examples:
  fxrender apply photo.png -o sharp.png -f Degauss:Threshold=4
  fxrender apply cells.tif -o split.png -f "Channel separation:Channel=5" \
      -f "Adaptive threshold:Size=51,Min=0" -f "Object separator:Det=20"
  fxrender apply shot_####.png -o blurred/ -f "Blur and enhance:Blur=0=1;20=13"
  fxrender apply clip.mp4 -o clip_sharp.mp4 -f Degauss

Exit codes: 0 done, 1 some frames failed (--keep-going), 2 wrong command line,
  65 invalid data, 66 input missing, 73 output cannot be created,
  74 read or write error, 75 try again later, 130 or 143 stopped by a signal)";

std::string versionText() {
    return std::string("fxrender ") + FX_VERSION + " (Qt " + qVersion() + ")\n";
}

void addPluginOption(CLI::App& command, std::string& path) {
    command.add_option("--plugin", path, "The plug-in library, if not the one of this program")
        ->type_name("FILE");
}

void addSelection(CLI::App& command, std::vector<std::string>& inputs,
                  std::vector<std::string>& filters, std::string& frames) {
    command.add_option("INPUT", inputs, "What to read")->required()->type_name("");
    command
        .add_option("-f,--filter", filters, "A filter with its settings; several run in this order")
        ->required()
        ->allow_extra_args(false)
        ->type_name("FILTER");
    command.add_option("--frames", frames, "The frames to look at, if not all")->type_name("LIST");
}

void defineList(CLI::App& app, ListOptions& options) {
    CLI::App* list = app.add_subcommand("list", "Shows the filters and their parameters");
    list->add_flag("--json", options.json, "As JSON, for programs");
    addPluginOption(*list, options.plugin);
}

/// 24, 23.976 or 24000/1001.
media::Ratio frameRate(const std::string& text) {
    media::Ratio rate;
    if (!media::parseFrameRate(text, rate))
        throw UsageError("--fps: " + text +
                         " is no number of frames a second; valid: 24, 29.97 or 30000/1001, up to "
                         "1000");
    return rate;
}

void addVideoOptions(CLI::App& command, media::VideoOptions& options) {
    command
        .add_option_function<std::string>(
            "--codec",
            [&options](const std::string& name) {
                std::string valid;
                for (const std::string& codec : media::videoCodecNames()) {
                    if (codec == name) options.codec = name;
                    valid += (valid.empty() ? "" : ", ") + codec;
                }
                if (options.codec != name)
                    throw UsageError("--codec: there is no \"" + name + "\"; valid: " + valid);
            },
            "Of a video: h264, h265, prores or ffv1, if not as its suffix says")
        ->type_name("NAME");
    const int worstQuality = 51;
    command
        .add_option("--quality", options.quality,
                    "Of a video in h264 or h265: 0 (best) to 51 (smallest)")
        ->check(CLI::Range(0, worstQuality).description(""))
        ->type_name("N");
    command
        .add_option_function<std::string>(
            "--fps", [&options](const std::string& text) { options.frameRate = frameRate(text); },
            "Of a video: frames a second, if not as the input says, else 25")
        ->type_name("RATE");
}

void defineApply(CLI::App& app, ApplyOptions& options) {
    CLI::App* apply = app.add_subcommand("apply", "Applies filters to pictures");
    addSelection(*apply, options.inputs, options.filters, options.frames);
    apply->add_option("-o,--output", options.output, "Where to write")
        ->required()
        ->type_name("OUTPUT");
    const int mostJobs = 1024;
    apply
        ->add_option("-j,--jobs", options.jobs,
                     "How many frames to work on at once, if not one per core")
        ->check(CLI::Range(1, mostJobs).description(""))
        ->type_name("N");
    apply->add_flag("--keep-going", options.keepGoing, "Render the other frames when one fails");
    apply->add_flag("-n,--dry-run", options.dryRun,
                    "Check everything, say what would be written, write nothing");
    const std::map<std::string, ProgressMode> modes = {{"auto", ProgressMode::Auto},
                                                       {"bar", ProgressMode::Bar},
                                                       {"plain", ProgressMode::Plain},
                                                       {"json", ProgressMode::Json},
                                                       {"none", ProgressMode::None}};
    apply->add_option("--progress", options.progress, "auto, bar, plain, json or none")
        ->transform(CLI::CheckedTransformer(modes).description(""))
        ->type_name("HOW");
    apply->add_option("--report", options.report, "Write what became of every frame, as JSON")
        ->type_name("FILE");
    apply->add_flag("-q,--quiet", options.quiet, "Nothing but error messages");
    addVideoOptions(*apply, options.video);
    addPluginOption(*apply, options.plugin);
    apply->footer(kApplyNotes);
}

void defineCheck(CLI::App& app, CheckOptions& options) {
    CLI::App* check = app.add_subcommand("check", "Says what would go wrong, renders nothing");
    addSelection(*check, options.inputs, options.filters, options.frames);
    addPluginOption(*check, options.plugin);
    check->footer("Exit codes: 0 nothing to object to, 1 there is, others as for apply");
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

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine result;
    CLI::App app(kIntroduction, "fxrender");
    app.set_version_flag("--version", versionText);
    app.require_subcommand(0, 1);
    app.get_formatter()->column_width(26);
    defineList(app, result.list);
    defineApply(app, result.apply);
    defineCheck(app, result.check);

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
    result.command = app.got_subcommand("list")    ? CommandLine::List
                     : app.got_subcommand("check") ? CommandLine::Check
                                                   : CommandLine::Apply;
    return result;
}

QStringList asQStrings(const std::vector<std::string>& texts) {
    QStringList list;
    for (const std::string& text : texts) list.append(QString::fromStdString(text));
    return list;
}

std::string shortUsage() {
    return "fxrender applies the filters of an image filter plug-in to pictures.\n"
           "\n"
           "  fxrender list [--json]                            what filters there are\n"
           "  fxrender apply INPUT... -o OUTPUT -f FILTER ...   apply filters to pictures\n"
           "  fxrender check INPUT... -f FILTER ...             what would go wrong, nothing "
           "rendered\n"
           "  fxrender apply --help                             all options, and examples\n";
}

}  // namespace render
