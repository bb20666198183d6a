#include <QFile>
#include <QToolBox>
#include <QUndoStack>
#include <algorithm>
#include <cstdio>

#include "host/check/ContractCheck.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/PluginGuard.h"
#include "host/kernel/PluginLoader.h"
#include "host/render/DisplaylessApplication.h"
#include "host/render/ExitCode.h"
#include "host/render/Fxrender.h"
#include "host/render/Process.h"

namespace {

using check::Finding;

void print(const Finding& finding, std::size_t keyWidth, std::size_t promiseWidth) {
    std::printf("%-*s  %-*s  %s\n", static_cast<int>(keyWidth), finding.filter.c_str(),
                static_cast<int>(promiseWidth), finding.promise.c_str(),
                finding.fault.empty() ? "kept" : ("BROKEN: " + finding.fault).c_str());
}

/// The table, and how many promises are broken.
int checkLibrary(const QString& file) {
    const render::DisplaylessApplication application;
    QUndoStack undo;
    QToolBox toolBox;
    PluginLoader loader(PluginServices{&undo, nullptr, &toolBox});
    QString error;
    if (!loader.load(file, &error))
        throw render::CommandError(render::InvalidData, error.toStdString());

    std::size_t keyWidth = 0, promiseWidth = 0;
    const auto widen = [](std::size_t& width, const std::string& text) {
        width = std::max(width, text.size());
    };
    for (HkFilterManipulator* manipulator : loader.manipulators())
        widen(keyWidth, KernelStore::instance()
                            .filterKey(KernelStore::filterTypeOf(*manipulator))
                            .toStdString());
    for (const std::string& promise : check::promises()) widen(promiseWidth, promise);

    int broken = 0, checked = 0;
    for (HkFilterManipulator* manipulator : loader.manipulators()) {
        const QString key =
            KernelStore::instance().filterKey(KernelStore::filterTypeOf(*manipulator));
        const auto begin = [&key](const std::string& promise) {
            notePluginUse(key + QStringLiteral(", ") + QString::fromStdString(promise));
        };
        for (const Finding& finding : check::checkFilter(*manipulator, undo, begin)) {
            print(finding, keyWidth, promiseWidth);
            ++checked;
            broken += !finding.fault.empty();
        }
        std::fflush(stdout);
    }
    std::printf("%d of %d promises kept\n", checked - broken, checked);
    return broken;
}

}  // namespace

int main(int argc, char** argv) {
    render::prepareProcess();
    const int promisesBroken = 1;
    return render::reportErrors(render::Messages("fxcheck"), [&](render::Messages& messages) {
        if (argc != 2 || argv[1][0] == '-')
            throw render::UsageError("say fxcheck PLUGIN.so; see docs/fxcheck.md");
        const QString file = QFile::decodeName(argv[1]);
        if (!QFile::exists(file))
            throw render::CommandError(render::MissingInput,
                                       std::string(argv[1]) + ": there is no such plug-in");
        return runGuarded(file, [&] {
            return render::reportErrors(messages, [&](render::Messages&) {
                return checkLibrary(file) == 0 ? int(render::Done) : promisesBroken;
            });
        });
    });
}
