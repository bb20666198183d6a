#include "host/render/PluginSession.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QToolBox>
#include <QUndoStack>
#include <cstdio>

#include "host/kernel/KernelStore.h"
#include "host/kernel/PluginLoader.h"
#include "host/render/ExitCode.h"

namespace render {

namespace {

/// What the toolkit says about the user's desktop does not concern a renderer.
void printToolkitMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
    if (message.startsWith(QLatin1String("QStandardPaths: "))) return;
    std::fprintf(stderr, "%s\n", qPrintable(message));
}

/// The toolkit needs no display to render; the user's desktop has no say in it either.
struct DisplaylessApplication {
    DisplaylessApplication() {
        qInstallMessageHandler(printToolkitMessage);
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qunsetenv("QT_QPA_PLATFORMTHEME");
        qunsetenv("QT_STYLE_OVERRIDE");
        application = std::make_unique<QApplication>(argumentCount, arguments);
    }

    // The toolkit keeps references to these. The program's own arguments are not for it.
    int argumentCount = 1;
    char name[9] = "fxrender";
    char* arguments[2] = {name, nullptr};
    std::unique_ptr<QApplication> application;
};

QString ownPlugin() {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() +
                           QStringLiteral("/../plugins/libBasicFiltersPlugin.so"));
}

void checkReadable(const QString& file, bool isOwn) {
    const QFileInfo info(file);
    if (info.isFile() && info.isReadable()) return;
    const std::string reason = info.exists() ? "cannot be read" : "there is no such plug-in";
    const std::string advice = isOwn ? "; build it, or name another with --plugin FILE"
                                     : "; name a plug-in library with --plugin FILE";
    throw CommandError(MissingInput, file.toStdString() + ": " + reason + advice);
}

}  // namespace

struct PluginSession::Private {
    // Made from top to bottom and destroyed from bottom to top.
    DisplaylessApplication application;
    QUndoStack undoStack;
    QToolBox toolBox;  ///< never shown; with it the filters make their control pages
    PluginLoader loader{PluginServices{&undoStack, nullptr, &toolBox}};
    document::FilterCatalog catalog;
};

PluginSession::PluginSession(const std::string& pluginPath) : d(new Private) {
    const bool isOwn = pluginPath.empty();
    const QString file = isOwn ? ownPlugin() : QFile::decodeName(pluginPath.c_str());
    checkReadable(file, isOwn);
    QString error;
    if (!d->loader.load(file, &error)) throw CommandError(InvalidData, error.toStdString());
}

PluginSession::~PluginSession() {
    KernelStore::instance().clear();
}

const document::FilterCatalog& PluginSession::catalog() const {
    return d->catalog;
}

}  // namespace render
