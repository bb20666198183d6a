#include "host/render/PluginSession.h"

#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QToolBox>
#include <QUndoStack>

#include "host/kernel/KernelStore.h"
#include "host/kernel/PluginLoader.h"
#include "host/render/DisplaylessApplication.h"
#include "host/render/ExitCode.h"

namespace render {

namespace {

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
    const QString file = isOwn ? PluginLoader::ownPlugin() : QFile::decodeName(pluginPath.c_str());
    checkReadable(file, isOwn);
    QString error;
    if (!d->loader.load(file, &error)) throw CommandError(InvalidData, error.toStdString());
}

PluginSession::~PluginSession() {
    KernelStore::instance().clear();
    // Entries go when control returns to an event loop, which a renderer has none of.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

const document::FilterCatalog& PluginSession::catalog() const {
    return d->catalog;
}

}  // namespace render
