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

/// What the user asks for.
struct CommandLine {
    enum Command { ShowText, List, Apply, Count, Check };

    Command command = ShowText;
    std::string text;  ///< what ShowText prints: help or the version
    ListOptions list;
    ApplyOptions apply;
    CountOptions count;
    Selection check;
};

/// Throws UsageError; the message names the nearest valid choice where there is one.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// Texts as they were typed, for the toolkit.
QStringList asQStrings(const std::vector<std::string>& texts);

/// A few lines for somebody who gave no arguments at all.
std::string shortUsage();

}  // namespace render
