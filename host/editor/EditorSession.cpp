#include "host/editor/EditorSession.h"

#include <QFileInfo>
#include <stdexcept>

#include "host/kernel/KernelStore.h"

namespace editor {

EditorSession::EditorSession(const QString& pluginFile)
    : m_foreignPlugin(pluginFile.isEmpty() ? QString() : QFileInfo(pluginFile).absoluteFilePath()),
      m_toolBox(new QToolBox),
      m_loader({&m_undoStack, nullptr, m_toolBox}) {
    QString error;
    if (!m_loader.load(pluginFile.isEmpty() ? PluginLoader::ownPlugin() : pluginFile, &error)) {
        delete m_toolBox;
        throw std::runtime_error(error.toStdString());
    }
    // The ranges are found by editing on a specimen: that is done before there is anything to undo.
    for (const int typeId : KernelStore::instance().types())
        for (int index = 0; index < m_catalog.descriptor(typeId).paramCount(); ++index)
            m_catalog.range(typeId, index);
}

EditorSession::~EditorSession() {
    m_undoStack.clear();
    KernelStore::instance().clear();
    delete m_toolBox;
}

}  // namespace editor
