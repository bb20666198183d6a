#pragma once

#include <QStringList>
#include <string>
#include <vector>

#include "host/media/MediaSource.h"
#include "host/render/Progress.h"

namespace render {

struct ListOptions {
    std::string filter;  ///< empty: all of them
    std::string plugin;  ///< empty: the one that belongs to this program
    bool json = false;
    bool markdown = false;
};

/// Which frames go through which filters.
struct Selection {
    std::vector<std::string> inputs;
    std::vector<std::string> filters;
    std::string plugin;  ///< empty: the one that belongs to this program
    std::string frames;  ///< empty: all of them
    media::ReadOptions reading;
};

/// How a run over frames goes.
struct RunOptions : Selection {
    int jobs = 0;  ///< 0: as many as there are cores
    bool keepGoing = false;
    ProgressMode progress = ProgressMode::Auto;
    bool quiet = false;
    std::string plot;  ///< empty: none
};

struct ApplyOptions : RunOptions {
    std::string output;
    bool dryRun = false;
    std::string report;  ///< empty: none; - is standard output
    media::WriteOptions writing;
};

struct CountOptions : RunOptions {
    std::string table;     ///< empty: none; - is standard output
    std::string labels;    ///< empty: none
    std::string outlines;  ///< empty: none
    int fewestPixels = 1;
    bool excludeBorder = false;
};

struct SheetOptions {
    std::string input;
    std::string frame;  ///< empty: the first
    media::ReadOptions reading;
    std::vector<std::string> filters;
    std::vector<std::string> sweeps;  ///< one, or two for a grid
    std::string plugin;               ///< empty: the one that belongs to this program
    std::string output;
    bool quiet = false;
};

struct CompareOptions {
    std::string before;
    std::string after;
    std::string frames;  ///< empty: all of them
    media::ReadOptions reading;
    std::string output;  ///< empty: no pictures
    int gain = 0;        ///< 0: what suits each picture
    bool json = false;
};

/// What the user asks for.
struct CommandLine {
    enum Command { ShowText, Complete, List, Apply, Count, Check, Sheet, Compare };

    Command command = ShowText;
    std::string text;                ///< what ShowText prints: help or the version
    std::vector<std::string> typed;  ///< what Complete goes on with, see Completion.h
    ListOptions list;
    ApplyOptions apply;
    CountOptions count;
    Selection check;
    SheetOptions sheet;
    CompareOptions compare;
};

/// Throws UsageError; the message names the nearest valid choice where there is one.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// Options and arguments of a command as parseCommandLine() takes them.
struct OptionDescription {
    std::vector<std::string> names;  ///< "-o", "--output"; of an argument its word: "INPUT"
    std::string value;               ///< "FILE", or the choices "auto|bar|none"; empty: takes none
    std::string about;
    bool isArgument = false;
    bool isRequired = false;
    bool isRepeated = false;
};
struct CommandDescription {
    std::string name;
    std::string about;
    std::string notes;  ///< lines below the options, to be shown as they stand
    std::vector<OptionDescription> options;
};

/// The program itself, then its commands: what its help, its manual and the completion of a shell
/// know.
std::vector<CommandDescription> describeCommands();

/// Texts as they were typed, for the toolkit.
QStringList asQStrings(const std::vector<std::string>& texts);

/// A few lines for somebody who gave no arguments at all.
std::string shortUsage();

}  // namespace render
