#pragma once

#include <string>
#include <vector>

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
};

/// What the user asks for.
struct CommandLine {
    enum Command { ShowText, List, Apply };

    Command command = ShowText;
    std::string text;  ///< what ShowText prints: help or the version
    ListOptions list;
    ApplyOptions apply;
};

/// Throws UsageError; the message names the nearest valid choice where there is one.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// A few lines for somebody who gave no arguments at all.
std::string shortUsage();

}  // namespace render
