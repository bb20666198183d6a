#include "host/render/Fxrender.h"

#include <cctype>
#include <cstdio>
#include <new>

#include "host/document/FilterError.h"
#include "host/kernel/KernelStore.h"
#include "host/media/MediaError.h"
#include "host/render/ApplyCommand.h"
#include "host/render/CheckCommand.h"
#include "host/render/CommandLine.h"
#include "host/render/ListCommand.h"
#include "host/render/PluginSession.h"
#include "host/render/StopSignal.h"

namespace render {

namespace {

/// A message quotes what the user wrote: whatever that was, it stays one line.
std::string onOneLine(const char* message) {
    std::string line;
    for (const char* c = message; *c != '\0'; ++c) {
        char escaped[8];
        const auto byte = static_cast<unsigned char>(*c);
        std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
        line += std::iscntrl(byte) ? std::string(escaped) : std::string(1, *c);
    }
    return line;
}

int printText(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    return Done;
}

std::string listText(const ListOptions& options, const document::FilterCatalog& catalog) {
    std::vector<int> types = KernelStore::instance().types();
    if (!options.filter.empty()) types = {catalog.typeOf(QString::fromStdString(options.filter))};
    if (options.json) return filterJson(catalog, types);
    if (options.filter.empty()) return filterTables(catalog);
    return options.markdown ? filterMarkdown(catalog, types.front())
                            : filterExplanation(catalog, types.front());
}

int runCommand(const std::vector<std::string>& arguments) {
    const CommandLine commandLine = parseCommandLine(arguments);
    switch (commandLine.command) {
        case CommandLine::ShowText:
            return printText(commandLine.text);
        case CommandLine::List: {
            const PluginSession session(commandLine.list.plugin);
            return printText(listText(commandLine.list, session.catalog()));
        }
        case CommandLine::Apply: {
            StopSignal::install();
            const PluginSession session(commandLine.apply.plugin);
            return runApply(commandLine.apply, session.catalog());
        }
        case CommandLine::Check: {
            const PluginSession session(commandLine.check.plugin);
            return runCheck(commandLine.check, session.catalog());
        }
    }
    return WrongCommandLine;
}

}  // namespace

int reportErrors(const char* program, const std::function<int()>& work) {
    const auto fail = [program](const char* message, int code) {
        std::fprintf(stderr, "%s: %s\n", program, onOneLine(message).c_str());
        return code;
    };
    try {
        const int code = work();
        // What did not reach standard output is lost: that is not success.
        if (std::fflush(stdout) != 0)
            return fail("standard output cannot be written", ReadWriteError);
        return code;
    } catch (const CommandError& error) {
        return fail(error.what(), error.code());
    } catch (const document::FilterError& error) {
        return fail(error.what(), WrongCommandLine);
    } catch (const media::MediaError& error) {
        return fail(error.what(), error.exitCode());
    } catch (const std::bad_alloc&) {
        return fail("not enough memory", TryAgainLater);
    } catch (const std::exception& error) {
        return fail(error.what(), ReadWriteError);
    }
}

int runFxrender(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        std::fputs(shortUsage().c_str(), stderr);
        return WrongCommandLine;
    }
    return reportErrors("fxrender", [&arguments] { return runCommand(arguments); });
}

}  // namespace render
