#pragma once

#include <QScrollArea>
#include <map>
#include <vector>

#include "host/editor/EditorState.h"

class QVBoxLayout;
class FxGuiImageFilter;

namespace editor {

class EntryRow;
class StageRow;

/// The applied filters in their order, between the source and the result: each one's entry widget
/// with a bar beside it that shows the picture after it, takes hold of it for dragging, and folds
/// it. Keys: Delete removes, Alt+Up and Alt+Down move, Ctrl+D duplicates, Return shows, Left and
/// Right fold and unfold.
class ChainPanel : public QScrollArea {
    Q_OBJECT

public:
    explicit ChainPanel(EditorState& state, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {300, 480}; }

signals:
    void duplicateRequested(int objectId);
    void renameRequested(int objectId);
    void menuRequested(int objectId, const QPoint& globalPosition);

private:
    EntryRow* makeRow(FxGuiImageFilter* entry);
    void look(int stage);
    void showOrder();
    void showStage();
    void showObjections();
    void dragTo(int y);
    void drop(EntryRow* row);
    int dropIndex(int y) const;
    void moveBy(int objectId, int places);

    EditorState& m_state;
    QWidget* m_content;
    QVBoxLayout* m_layout;
    StageRow* m_source;
    StageRow* m_result;
    QWidget* m_dropLine;
    QWidget* m_hint;
    std::map<int, EntryRow*> m_rows;  // by object id
    std::vector<int> m_order;
    int m_dropIndex = -1;
};

}  // namespace editor
