#pragma once

#include <QStringList>
#include <cstdint>
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
    std::vector<std::string> inputs;     ///< the project alone when there are no filters
    std::vector<std::string> filters;    ///< empty: those of a project
    std::vector<std::string> overrides;  ///< values to change, as document::overrideFilter() reads
    std::string plugin;                  ///< empty: the one that belongs to this program
    std::string frames;                  ///< empty: all of them
    std::string range;  ///< which sample values become 0 and 255, as typed; empty: not said
    media::ReadOptions reading;
};

/// One of several runs that share out the frames of a job.
struct Shard {
    int index = 1;  ///< from 1
    int count = 1;

    std::string text() const { return std::to_string(index) + '/' + std::to_string(count); }
};

constexpr int kMostJobs = 1024;

/// How a run over frames goes.
struct RunOptions : Selection {
    Shard shard;
    int jobs = 0;  ///< 0: as many as there are cores
    bool keepGoing = false;
    ProgressMode progress = ProgressMode::Auto;
    bool quiet = false;
    std::string plot;            ///< empty: none
    std::int64_t maxMemory = 0;  ///< bytes; 0: no limit
};

struct ApplyOptions : RunOptions {
    std::string output;
    bool dryRun = false;
    bool resume = false;
    std::string report;  ///< empty: none; - is standard output
    media::WriteOptions writing;

    /// Whether it is recorded beside the outputs how they were made.
    bool isRecorded() const { return resume || shard.count > 1 || filters.empty(); }
};

struct VerifyOptions : Selection {
    std::string output;
    media::WriteOptions writing;
};

struct SaveOptions : Selection {
    std::string project;
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
    enum Command { ShowText, Complete, List, Apply, Count, Check, Save, Verify, Sheet, Compare };

    Command command = ShowText;
    std::string text;                ///< what ShowText prints: help or the version
    std::vector<std::string> typed;  ///< what Complete goes on with, see Completion.h
    ListOptions list;
    ApplyOptions apply;  ///< also to render a project
    CountOptions count;
    Selection check;
    SaveOptions save;
    VerifyOptions verify;
    SheetOptions sheet;
    CompareOptions compare;
};

/// Throws UsageError; the message names the nearest valid choice where there is one.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// LO-HI, auto or each. Throws UsageError.
media::SampleRange parseRange(const std::string& text);
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
