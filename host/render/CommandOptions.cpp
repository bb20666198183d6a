#include "host/render/CommandOptions.h"

#include <CLI/CLI.hpp>
#include <QtGlobal>
#include <functional>
#include <limits>
#include <map>

#include "host/render/ExitCode.h"
#include "host/render/MemoryLimit.h"

namespace render {

namespace {

const char kApplyNotes[] =
    R"(FILTER   KEY or KEY:Name=VALUE,Name=VALUE...  (fxrender list shows what there is;
         titles, and labels of the filter's page, are understood as well)
VALUE    a number, true, false or the name of a choice; over time keys such as
         "0=1;20|=5;40=9": FRAME=VALUE runs in a line to the next key,
         FRAME|=VALUE holds until it
INPUT    a picture, several pictures, a numbered sequence (shot_####.png,
         shot_%04d.png), a folder or a video
OUTPUT   a picture, a numbered sequence, a folder or a video (.mp4, .mov, .mkv);
         never one of the inputs
LIST     single frames, ranges, steps: 1,5,10-20:2  -5  -10--5  100-

Examples:
  fxrender apply photo.png -o sharp.png -f Degauss:Threshold=4
  fxrender apply cells.tif -o split.png -f "Channel separation:Channel=L" \
      -f "Adaptive threshold:Size=51,Min=0" -f "Object separator:Det=20"
  fxrender apply shot_####.png -o blurred/ -f "Blur and enhance:Blur=0=1;20=13"
  fxrender apply clip.mp4 -o clip_sharp.mp4 -f Degauss

Exit codes: 0 done, 1 some frames failed (--keep-going), 2 wrong command line,
  65 invalid data, 66 input missing, 73 output cannot be created,
  74 read or write error, 75 try again later,
  129, 130, 131 or 143 stopped by a signal)";

const char kCountNotes[] =
    R"(Counts the white areas of what the filters make of each frame; pixels that touch
by a corner are of one area. Standard output gets a CSV table, one row a frame:
how many, and their mean, smallest and largest area in pixels.

FILTER, INPUT, OUTPUT, LIST and exit codes: as for apply.

Example:
  fxrender count nuclei_####.tif --table objects.csv --outlines outlines/ \
      -f "Adaptive threshold:Size=31,Min=0" -f "Object separator:Det=20")";

const char kSheetNotes[] =
    R"(SWEEP    KEY:Name=VALUE,VALUE... or KEY:Name=FIRST-LAST:STEP: one parameter of one
         of the filters, and the values to try it with. KEY#2 is the second of its
         kind. Without -f the filters are those of the sweeps, with their defaults.

INPUT, FILTER, OUTPUT and exit codes: as for apply.

Examples:
  fxrender sheet photo.png -o sheet.png --over "Blur and enhance:Blur=1-13:4"
  fxrender sheet cells.tif -o sheet.png -f "Adaptive threshold:Min=0" \
      -f "Object separator" --over "Adaptive threshold:Size=21,51,101" \
      --over "Object separator:Det=5,10,20")";

const char kCompareNotes[] =
    R"(A and B are pictures, numbered sequences or folders with the same number of frames,
which are compared in their order. PSNR is 20 log10(255 / RMSE) over all samples of
all channels, inf for equal pictures.

Exit codes: 0 equal, 1 different, 65 sizes, channels or numbers of frames do not
  agree, others as for apply

Example:
  fxrender compare photo.png sharp.png -o difference.png)";

void addPluginOption(CLI::App& command, std::string& path) {
    command.add_option("--plugin", path, "The plug-in library, if not the one of this program")
        ->type_name("FILE");
}

CLI::Option* addFilters(CLI::App& command, Selection& selection) {
    return command
        .add_option("-f,--filter", selection.filters,
                    "A filter with its settings; several run in this order")
        ->allow_extra_args(false)
        ->type_name("FILTER");
}

void addRangeOption(CLI::App& command, const std::function<void(const std::string&)>& set) {
    command
        .add_option_function<std::string>(
            "--range", set,
            "Sample values that become black and white: those given, of the first frame or of each")
        ->type_name("LO-HI|auto|each");
}

void addRangeOption(CLI::App& command, media::ReadOptions& reading) {
    addRangeOption(command,
                   [&reading](const std::string& text) { reading.range = parseRange(text); });
}

void addRangeOption(CLI::App& command, Selection& selection) {
    addRangeOption(command, [&selection](const std::string& text) {
        selection.range = text;
        selection.reading.range = parseRange(text);
    });
}

/// Which chain a command takes.
enum class Chain {
    Filters,  ///< INPUT... -f FILTER
    Project,
    Either
};

void addSelection(CLI::App& command, Selection& selection, Chain chain) {
    if (chain == Chain::Project)
        command.add_option("PROJECT", selection.inputs, "The project to render")
            ->required()
            ->expected(1)
            ->type_name("");
    else
        command
            .add_option("INPUT", selection.inputs,
                        chain == Chain::Either ? "What to read, or a project" : "What to read")
            ->required()
            ->type_name("");
    if (chain != Chain::Project) addFilters(command, selection)->required(chain == Chain::Filters);
    if (chain != Chain::Filters)
        command
            .add_option("--set", selection.overrides,
                        "Give a filter of the project another value: \"KEY:Name=VALUE\", "
                        "\"KEY#2:...\" for the second of that key")
            ->allow_extra_args(false)
            ->type_name("SETTING");
    command.add_option("--frames", selection.frames, "The frames to look at, if not all")
        ->type_name("LIST");
    addRangeOption(command, selection);
    addPluginOption(command, selection.plugin);
}

const std::map<std::string, ProgressMode> kProgressModes = {{"auto", ProgressMode::Auto},
                                                            {"bar", ProgressMode::Bar},
                                                            {"plain", ProgressMode::Plain},
                                                            {"json", ProgressMode::Json},
                                                            {"none", ProgressMode::None}};

void setProgress(const std::string& word, ProgressMode& mode) {
    const auto found = kProgressModes.find(word);
    if (found == kProgressModes.end())
        throw UsageError("--progress: there is no \"" + word +
                         "\"; valid: auto, bar, plain, json, none");
    mode = found->second;
}

CLI::Option* addNumber(CLI::App& command, const std::string& name, int& number, int most,
                       const std::string& about) {
    return command.add_option(name, number, about)
        ->check(CLI::Range(1, most).description(""))
        ->type_name("N");
}

/// "2/5"
Shard parseShard(const std::string& text) {
    Shard shard;
    const QStringList numbers = QString::fromStdString(text).split('/');
    bool isIndex = false, isCount = false;
    if (numbers.size() == 2) {
        shard.index = numbers[0].toInt(&isIndex);
        shard.count = numbers[1].toInt(&isCount);
    }
    if (!isIndex || !isCount || shard.index < 1 || shard.index > shard.count)
        throw UsageError("--shard: cannot use \"" + text +
                         "\"; write I/N with I from 1 to N, such as 2/5");
    return shard;
}

void addRunOptions(CLI::App& command, RunOptions& options, Chain chain) {
    addSelection(command, options, chain);
    addNumber(command, "-j,--jobs", options.jobs, kMostJobs,
              "How many frames to work on at once, if not one per core");
    command
        .add_option_function<std::string>(
            "--max-memory",
            [&options](const std::string& text) { options.maxMemory = parseMemorySize(text); },
            "Work on fewer frames at once where they would need more: 500M, 2G")
        ->type_name("SIZE");
    command
        .add_option_function<std::string>(
            "--shard", [&options](const std::string& text) { options.shard = parseShard(text); },
            "Do every Nth frame only, from the Ith on")
        ->type_name("I/N");
    command.add_flag("--keep-going", options.keepGoing, "Do the other frames when one fails");
    command
        .add_option_function<std::string>(
            "--progress",
            [&options](const std::string& word) { setProgress(word, options.progress); },
            "How to show what is done")
        ->type_name("auto|bar|plain|json|none");
    command.add_flag("-q,--quiet", options.quiet, "Nothing but results and error messages");
    command
        .add_option("--plot", options.plot, "Draw the number of objects over the frames, as SVG")
        ->type_name("FILE");
}

void defineList(CLI::App& app, ListOptions& options) {
    CLI::App* list = app.add_subcommand("list", "Shows the filters and their parameters");
    CLI::Option* filter =
        list->add_option("KEY", options.filter, "Explains this filter")->type_name("");
    CLI::Option* json = list->add_flag("--json", options.json, "As JSON, for programs");
    // For the pages of the documentation.
    list->add_flag("--markdown", options.markdown)->needs(filter)->excludes(json)->group("");
    addPluginOption(*list, options.plugin);
}

void addPictureOptions(CLI::App& command, media::WriteOptions& writing) {
    const int highestLevel = 12;
    command
        .add_option("--compression", writing.compression,
                    "Of PNG and TIFF: 0 none, 1 fast (if not given), 12 smallest")
        ->check(CLI::Range(0, highestLevel).description(""))
        ->type_name("LEVEL");
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

void addApplyOptions(CLI::App& command, ApplyOptions& options, Chain chain) {
    command.add_option("-o,--output", options.output, "Where to write")
        ->required()
        ->type_name("OUTPUT");
    addRunOptions(command, options, chain);
    command.add_flag("-n,--dry-run", options.dryRun,
                     "Check everything, say what would be written, write nothing");
    command.add_flag("--resume", options.resume,
                     "Leave outputs alone that stand and are what would be written today");
    command
        .add_option("--report", options.report,
                    "Write what became of every frame, as JSON, or as CSV to a .csv file; - is "
                    "standard output")
        ->type_name("FILE");
    addPictureOptions(command, options.writing);
    addVideoOptions(command, options.writing.video);
}

void defineApply(CLI::App& app, ApplyOptions& options) {
    CLI::App* apply = app.add_subcommand("apply", "Applies filters to pictures");
    addApplyOptions(*apply, options, Chain::Filters);
    apply->footer(kApplyNotes);
}

void defineRender(CLI::App& app, ApplyOptions& options) {
    CLI::App* render = app.add_subcommand("render", "Renders a saved project");
    addApplyOptions(*render, options, Chain::Project);
    render->footer(
        "OUTPUT, LIST and exit codes: as for apply.\n\nExample:\n"
        "  fxrender render reel.fxp -o out/ --resume --set \"Blur and enhance:Blur=3\"");
}

void defineSave(CLI::App& app, SaveOptions& options) {
    CLI::App* save = app.add_subcommand("save", "Writes a project: inputs, filters, values, keys");
    save->add_option("PROJECT", options.project, "The file to write, such as reel.fxp")
        ->required()
        ->type_name("");
    save->add_option("INPUT", options.inputs, "What it is to read")->required()->type_name("");
    addFilters(*save, options)->required();
    addRangeOption(*save, options);
    addPluginOption(*save, options.plugin);
    save->footer("FILTER, INPUT and exit codes: as for apply.");
}

void defineVerify(CLI::App& app, VerifyOptions& options) {
    CLI::App* verify =
        app.add_subcommand("verify", "Says which outputs are missing, stale or damaged");
    verify->add_option("-o,--output", options.output, "What was written")
        ->required()
        ->type_name("OUTPUT");
    addSelection(*verify, options, Chain::Either);
    addPictureOptions(*verify, options.writing);
    verify->footer("Exit codes: 0 all is there and up to date, 1 it is not, others as for apply");
}

void defineCount(CLI::App& app, CountOptions& options) {
    CLI::App* count = app.add_subcommand("count", "Counts and measures objects");
    count
        ->add_option("--table", options.table,
                     "Write a row for each object, as CSV; - is standard output")
        ->type_name("FILE");
    count
        ->add_option("--labels", options.labels,
                     "Write pictures of the objects' numbers, 16 bits, .png or .tif")
        ->type_name("OUTPUT");
    count
        ->add_option("--outlines", options.outlines,
                     "Write the input with the outlines of the objects drawn over it")
        ->type_name("OUTPUT");
    addNumber(*count, "--min-area", options.fewestPixels, std::numeric_limits<int>::max(),
              "Leave out objects of fewer pixels");
    count->add_flag("--exclude-border", options.excludeBorder,
                    "Leave out objects that reach the border of the frame");
    addRunOptions(*count, options, Chain::Either);
    count->footer(kCountNotes);
}

void defineCheck(CLI::App& app, Selection& selection) {
    CLI::App* check = app.add_subcommand("check", "Says what would go wrong, renders nothing");
    addSelection(*check, selection, Chain::Either);
    check->footer("Exit codes: 0 nothing to object to, 1 there is, others as for apply");
}

void defineSheet(CLI::App& app, SheetOptions& options) {
    CLI::App* sheet =
        app.add_subcommand("sheet", "Shows a frame with several values of a parameter");
    sheet->add_option("INPUT", options.input, "What to read")->required()->type_name("");
    sheet
        ->add_option("--over", options.sweeps,
                     "The values to try; given twice, all pairs as a grid")
        ->required()
        ->allow_extra_args(false)
        ->type_name("SWEEP");
    sheet
        ->add_option("-f,--filter", options.filters,
                     "A filter with its settings; several run in this order")
        ->allow_extra_args(false)
        ->type_name("FILTER");
    sheet->add_option("-o,--output", options.output, "Where to write the sheet")
        ->required()
        ->type_name("OUTPUT");
    sheet->add_option("--frame", options.frame, "The frame to show, if not the first")
        ->type_name("N");
    sheet->add_flag("-q,--quiet", options.quiet, "Nothing but error messages");
    addRangeOption(*sheet, options.reading);
    addPluginOption(*sheet, options.plugin);
    sheet->footer(kSheetNotes);
}

void defineCompare(CLI::App& app, CompareOptions& options) {
    CLI::App* compare = app.add_subcommand("compare", "Says and shows how pictures differ");
    compare->add_option("A", options.before, "What was before")->required()->type_name("");
    compare->add_option("B", options.after, "What came of it")->required()->type_name("");
    compare
        ->add_option("-o,--output", options.output,
                     "Write before, after and difference side by side")
        ->type_name("OUTPUT");
    compare->add_option("--frames", options.frames, "The frames to look at, if not all")
        ->type_name("LIST");
    addRangeOption(*compare, options.reading);
    const int mostGain = 255;
    addNumber(*compare, "--gain", options.gain, mostGain,
              "Amplify differences so many times, if not as far as each picture allows");
    compare->add_flag("--json", options.json, "As JSON, for programs");
    compare->footer(kCompareNotes);
}

}  // namespace

std::string versionText() {
    return std::string("fxrender ") + FX_VERSION + " (Qt " + qVersion() + ")\n";
}

void defineCommands(CLI::App& app, CommandLine& result, ApplyOptions& project) {
    app.set_version_flag("--version", versionText)->description("Show the version and exit");
    app.require_subcommand(0, 1);
    app.get_formatter()->column_width(26);
    defineList(app, result.list);
    defineApply(app, result.apply);
    defineCount(app, result.count);
    defineCheck(app, result.check);
    defineRender(app, project);
    defineSave(app, result.save);
    defineVerify(app, result.verify);
    defineSheet(app, result.sheet);
    defineCompare(app, result.compare);
}

}  // namespace render
