#include "host/render/Fxrender.h"

#include <QFile>
#include <cstdio>
#include <new>
#include <system_error>
#include <type_traits>

#include "host/document/ChainRenderer.h"
#include "host/document/FilterError.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/PluginGuard.h"
#include "host/media/MediaError.h"
#include "host/render/ApplyCommand.h"
#include "host/render/CheckCommand.h"
#include "host/render/CommandLine.h"
#include "host/render/CompareCommand.h"
#include "host/render/Completion.h"
#include "host/render/CountCommand.h"
#include "host/render/ExitCode.h"
#include "host/render/ListCommand.h"
#include "host/render/PluginSession.h"
#include "host/render/SaveCommand.h"
#include "host/render/SheetCommand.h"
#include "host/render/StopSignal.h"
#include "host/render/VerifyCommand.h"

namespace render {

namespace {

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

/// Calls use(options, the function that runs them) for a command that works with filters; false: it
/// is another command.
template <typename Use>
bool withFilterCommand(const CommandLine& commandLine, Use use) {
    const auto list = [](const ListOptions& options, const document::FilterCatalog& catalog,
                         Messages&) { return printText(listText(options, catalog)); };
    switch (commandLine.command) {
        case CommandLine::List:
            return use(commandLine.list, list), true;
        case CommandLine::Apply:
            return use(commandLine.apply, runApply), true;
        case CommandLine::Count:
            return use(commandLine.count, runCount), true;
        case CommandLine::Check:
            return use(commandLine.check, runCheck), true;
        case CommandLine::Save:
            return use(commandLine.save, runSave), true;
        case CommandLine::Verify:
            return use(commandLine.verify, runVerify), true;
        case CommandLine::Sheet:
            return use(commandLine.sheet, runSheet), true;
        case CommandLine::ShowText:
        case CommandLine::Compare:
        case CommandLine::Complete:
            break;
    }
    return false;
}

int runCommand(const CommandLine& commandLine, Messages& messages) {
    int code = WrongCommandLine;
    const auto run = [&](const auto& options, const auto& command) {
        // What is done of a run over frames is not lost to a signal.
        if constexpr (std::is_base_of_v<RunOptions, std::decay_t<decltype(options)>>) {
            StopSignal::install();
            if (options.quiet) messages.silence();
        }
        const PluginSession session(options.plugin);
        code = command(options, session.catalog(), messages);
    };
    if (withFilterCommand(commandLine, run)) return code;
    if (commandLine.command == CommandLine::Compare) return runCompare(commandLine.compare);
    return printText(commandLine.command == CommandLine::Complete
                         ? completionReply(commandLine.typed)
                         : commandLine.text);
}

/// The library that is not the one of this program; empty: there is none.
std::string foreignPlugin(const CommandLine& commandLine) {
    std::string plugin;
    withFilterCommand(commandLine,
                      [&](const auto& options, const auto&) { plugin = options.plugin; });
    return plugin;
}

/// Programs that read events get them from the first error on.
Messages::Style styleOf(const CommandLine& commandLine) {
    const bool hasEvents = (commandLine.command == CommandLine::Apply &&
                            commandLine.apply.progress == ProgressMode::Json) ||
                           (commandLine.command == CommandLine::Count &&
                            commandLine.count.progress == ProgressMode::Json);
    return hasEvents ? Messages::Style::Events : Messages::Style::Lines;
}

/// What belongs to an exception without words of ours.
int exitCodeOf(const std::system_error& error) {
    const bool isShortage = error.code() == std::errc::resource_unavailable_try_again ||
                            error.code() == std::errc::not_enough_memory;
    return isShortage ? TryAgainLater : ReadWriteError;
}

}  // namespace

int reportErrors(Messages messages, const std::function<int(Messages&)>& work) {
    const auto fail = [&messages](const char* message, int code) {
        messages.error(message, code);
        return code;
    };
    try {
        const int code = work(messages);
        // What did not reach standard output is lost: that is not success.
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            return fail("standard output cannot be written", ReadWriteError);
        return code;
    } catch (const CommandError& error) {
        return fail(error.what(), error.code());
    } catch (const document::FilterError& error) {
        return fail(error.what(), WrongCommandLine);
    } catch (const document::FilterMisconduct& error) {
        return fail(error.what(), InvalidData);
    } catch (const media::MediaError& error) {
        return fail(error.what(), exitCodeOf(error.kind()));
    } catch (const PluginEndedProgram& error) {
        return fail(error.what(), InvalidData);
    } catch (const NoPluginProcess& error) {
        return fail(error.what(), TryAgainLater);
    } catch (const std::bad_alloc&) {
        return fail(kNoMemoryText, TryAgainLater);
    } catch (const std::system_error& error) {
        const int code = exitCodeOf(error);
        return fail(code == TryAgainLater ? "the system grants no further threads or memory; close "
                                            "other programs or use fewer --jobs"
                                          : error.what(),
                    code);
    } catch (const std::exception& error) {
        return fail(error.what(), ReadWriteError);
    } catch (...) {
        return fail("the plug-in broke off without a word; use another one", InvalidData);
    }
}

int runFxrender(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        std::fputs(shortUsage().c_str(), stderr);
        return WrongCommandLine;
    }
    return reportErrors(Messages("fxrender"), [&arguments](Messages& messages) {
        const CommandLine commandLine = parseCommandLine(arguments);
        messages.setStyle(styleOf(commandLine));
        const std::string plugin = foreignPlugin(commandLine);
        if (plugin.empty()) return runCommand(commandLine, messages);
        return runGuarded(QFile::decodeName(plugin.c_str()), [&] {
            return reportErrors(messages,
                                [&](Messages& own) { return runCommand(commandLine, own); });
        });
    });
}

}  // namespace render
