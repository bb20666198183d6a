#pragma once

#include <QObject>
#include <QStringList>
#include <QUndoStack>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "host/document/FilterCatalog.h"
#include "host/document/Keyframes.h"
#include "host/editor/EditorState.h"
#include "host/kernel/KernelStore.h"

namespace editor {

/// The lanes of the timeline without their looks: the animated instances, their keys and which of
/// them are selected. What is done to keys becomes one step of the undo stack.
class TimelineKeys : public QObject {
    Q_OBJECT

public:
    using Key = std::pair<int, qint64>;  ///< object id, frame

    struct Lane {
        InstanceId id;
        QString title;
        document::FrameSet frames;
    };

    TimelineKeys(EditorState& state, QUndoStack& undoStack, const document::FilterCatalog& catalog,
                 QObject* parent = nullptr);

    /// In the order of the filters.
    const std::vector<Lane>& lanes() const { return m_lanes; }

    const std::set<Key>& selected() const { return m_selected; }
    void setSelected(const std::set<Key>& keys);
    void toggleSelected(int lane);  ///< the key at the current frame

    void addAt(int lane, qint64 frame);
    void addHere();  ///< in the lanes that hold a selected key; in all when none does
    void deleteSelected();
    /// The part of a move by so many frames that leaves every selected key among the frames.
    qint64 withinFrames(qint64 by) const;
    void moveSelected(qint64 by);  ///< that part of it
    void copySelected();
    void paste();  ///< into the lanes as addHere(), the earliest key at the current frame
    void goToKey(int direction);  ///< the nearest key after (1) or before (-1) the current frame

    QString textOf(Key key) const;  ///< as the command line takes it

signals:
    void changed();                        ///< lanes, keys or selection
    void noticed(const QString& message);  ///< what could not be done, or was left out

private:
    void readStore();
    std::vector<int> targetLanes() const;
    std::map<int, QString> textsForLanes(const QStringList& lines) const;
    document::FrameSet selectedFrames(const Lane& lane) const;
    /// Puts changed states into the store as one step.
    void apply(const std::map<int, InstanceState>& states, const QString& text);

    EditorState& m_state;
    QUndoStack& m_undoStack;
    const document::FilterCatalog& m_catalog;
    std::vector<Lane> m_lanes;
    std::set<Key> m_selected;
};

}  // namespace editor
