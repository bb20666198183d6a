#include "host/render/Fxrender.h"

#include <QFile>
#include <cstdio>
#include <new>
#include <system_error>

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

/// Loads the filters, to be run over frames: what is done by then is not lost to a signal.
template <typename Command, typename Options>
int runOverFrames(Command command, const Options& options, Messages& messages) {
    StopSignal::install();
    if (options.quiet) messages.silence();
    const PluginSession session(options.plugin);
    return command(options, session.catalog(), messages);
}

int runCommand(const CommandLine& commandLine, Messages& messages) {
    switch (commandLine.command) {
        case CommandLine::ShowText:
            return printText(commandLine.text);
        case CommandLine::List: {
            const PluginSession session(commandLine.list.plugin);
            return printText(listText(commandLine.list, session.catalog()));
        }
        case CommandLine::Apply:
            return runOverFrames(runApply, commandLine.apply, messages);
        case CommandLine::Count:
            return runOverFrames(runCount, commandLine.count, messages);
        case CommandLine::Check: {
            const PluginSession session(commandLine.check.plugin);
            return runCheck(commandLine.check, session.catalog(), messages);
        }
        case CommandLine::Save: {
            const PluginSession session(commandLine.save.plugin);
            return runSave(commandLine.save, session.catalog(), messages);
        }
        case CommandLine::Verify: {
            const PluginSession session(commandLine.verify.plugin);
            return runVerify(commandLine.verify, session.catalog(), messages);
        }
        case CommandLine::Sheet: {
            const PluginSession session(commandLine.sheet.plugin);
            return runSheet(commandLine.sheet, session.catalog(), messages);
        }
        case CommandLine::Compare:
            return runCompare(commandLine.compare);
        case CommandLine::Complete:
            return printText(completionReply(commandLine.typed));
    }
    return WrongCommandLine;
}

/// The library that is not the one of this program; empty: there is none.
std::string foreignPlugin(const CommandLine& commandLine) {
    switch (commandLine.command) {
        case CommandLine::List:
            return commandLine.list.plugin;
        case CommandLine::Apply:
            return commandLine.apply.plugin;
        case CommandLine::Count:
            return commandLine.count.plugin;
        case CommandLine::Check:
            return commandLine.check.plugin;
        case CommandLine::Save:
            return commandLine.save.plugin;
        case CommandLine::Verify:
            return commandLine.verify.plugin;
        case CommandLine::Sheet:
            return commandLine.sheet.plugin;
        case CommandLine::ShowText:
        case CommandLine::Compare:
        case CommandLine::Complete:
            break;
    }
    return {};
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
