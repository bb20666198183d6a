#pragma once

#include <QStringList>
#include <string>
#include <vector>

#include "host/media/VideoOptions.h"
#include "host/render/Progress.h"

namespace render {

struct ListOptions {
    std::string plugin;  ///< empty: the one that belongs to this program
    bool json = false;
};

struct ApplyOptions {
    std::vector<std::string> inputs;
    std::string output;
    std::vector<std::string> filters;
    std::string plugin;  ///< empty: the one that belongs to this program
    std::string frames;  ///< empty: all of them
    int jobs = 0;        ///< 0: as many as there are cores
    bool keepGoing = false;
    bool dryRun = false;
    ProgressMode progress = ProgressMode::Auto;
    std::string report;  ///< empty: none
    bool quiet = false;
    media::VideoOptions video;  ///< how an output that is a video is written
};

struct CheckOptions {
    std::vector<std::string> inputs;
    std::vector<std::string> filters;
    std::string plugin;  ///< empty: the one that belongs to this program
    std::string frames;  ///< empty: all of them
};

/// What the user asks for.
struct CommandLine {
    enum Command { ShowText, List, Apply, Check };

    Command command = ShowText;
    std::string text;  ///< what ShowText prints: help or the version
    ListOptions list;
    ApplyOptions apply;
    CheckOptions check;
};

/// Throws UsageError; the message names the nearest valid choice where there is one.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// Texts as they were typed, for the toolkit.
QStringList asQStrings(const std::vector<std::string>& texts);

/// A few lines for somebody who gave no arguments at all.
std::string shortUsage();

}  // namespace render
