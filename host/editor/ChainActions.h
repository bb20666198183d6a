#pragma once

#include <QObject>
#include <QPoint>
#include <QStringList>
#include <functional>
#include <vector>

#include "host/document/FilterChain.h"
#include "host/editor/EditorSession.h"
#include "host/kernel/KernelStore.h"

class QMenu;

namespace editor {

/// What is done to applied filters from menus: each is one step. Its dialogs belong to the window.
class ChainActions : public QObject {
    Q_OBJECT

public:
    ChainActions(EditorSession& session, QWidget* window);

    void duplicate(int objectId);
    void rename(int objectId);  ///< asks for the name
    void showMenu(int objectId, const QPoint& globalPosition);
    void pasteFilters();  ///< from the clipboard, as text
    void fillPresetMenu(QMenu& menu);

signals:
    void sweepRequested(int objectId);

private:
    void setState(int objectId, const InstanceState& state, const QString& text);
    void append(const std::vector<document::FilterSetup>& filters, const QString& text);
    void savePreset(const QStringList& filterTexts);
    void applyPreset(const QString& file);
    void fillPresetMenuOf(int objectId, int typeId, QMenu& menu);

    EditorSession& m_session;
    QWidget* m_window;
};

}  // namespace editor
