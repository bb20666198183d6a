#include "host/editor/TimelineKeys.h"

#include <QApplication>
#include <QClipboard>
#include <algorithm>
#include <iterator>

#include "host/document/FilterError.h"
#include "host/kernel/CmdSetChain.h"
#include "host/kernel/KernelNotifier.h"

namespace editor {

TimelineKeys::TimelineKeys(EditorState& state, QUndoStack& undoStack,
                           const document::FilterCatalog& catalog, QObject* parent)
    : QObject(parent), m_state(state), m_undoStack(undoStack), m_catalog(catalog) {
    KernelNotifier* const store = KernelNotifier::instance();
    connect(store, &KernelNotifier::objectChanged, this, &TimelineKeys::readStore);
    connect(store, &KernelNotifier::orderChanged, this, &TimelineKeys::readStore);
    readStore();
}

void TimelineKeys::readStore() {
    const KernelStore& store = KernelStore::instance();
    m_lanes.clear();
    std::set<Key> present;
    for (const InstanceId& id : store.instances()) {
        const auto state = store.state(id.objectId);
        if (!state->animated) continue;
        const document::FrameSet frames = document::keyFrames(*state);
        for (const qint64 frame : frames) present.insert({id.objectId, frame});
        m_lanes.push_back({id, store.nameOf(id.objectId), frames});
    }
    std::set<Key> stillThere;
    std::set_intersection(m_selected.begin(), m_selected.end(), present.begin(), present.end(),
                          std::inserter(stillThere, stillThere.end()));
    m_selected = stillThere;
    emit changed();
}

void TimelineKeys::setSelected(const std::set<Key>& keys) {
    m_selected = keys;
    readStore();  // only what is there can be selected
}

document::FrameSet TimelineKeys::selectedFrames(const Lane& lane) const {
    document::FrameSet frames;
    for (const Key& key : m_selected)
        if (key.first == lane.id.objectId) frames.insert(key.second);
    return frames;
}

std::vector<int> TimelineKeys::targetLanes() const {
    std::vector<int> lanes;
    for (std::size_t lane = 0; lane < m_lanes.size(); ++lane)
        if (m_selected.empty() || !selectedFrames(m_lanes[lane]).empty())
            lanes.push_back(static_cast<int>(lane));
    return lanes;
}

void TimelineKeys::apply(const std::map<int, InstanceState>& states, const QString& text) {
    std::vector<ChainItem> chain = currentChain();
    for (ChainItem& item : chain) {
        const auto changed = states.find(item.id.objectId);
        if (changed != states.end()) item.state = changed->second;
    }
    m_undoStack.push(new CmdSetChain(text, chain));
}

void TimelineKeys::addAt(int lane, qint64 frame) {
    const Lane shown = m_lanes.at(static_cast<std::size_t>(lane));
    const auto state = KernelStore::instance().state(shown.id.objectId);
    apply({{shown.id.objectId,
            document::withKeyAt(*state, m_catalog.descriptor(shown.id.typeId), frame)}},
          tr("%1: add a key (frame %2)").arg(shown.title).arg(frame));
}

void TimelineKeys::addHere() {
    std::map<int, InstanceState> states;
    for (const int index : targetLanes()) {
        const Lane& lane = m_lanes[static_cast<std::size_t>(index)];
        states[lane.id.objectId] =
            document::withKeyAt(*KernelStore::instance().state(lane.id.objectId),
                                m_catalog.descriptor(lane.id.typeId), m_state.currentFrame());
    }
    if (states.empty()) {
        emit noticed(tr("No filter is animated: press ◇ on one first"));
        return;
    }
    apply(states, tr("Add a key (frame %1)").arg(m_state.currentFrame()));
}

void TimelineKeys::deleteSelected() {
    std::map<int, InstanceState> states;
    const KernelStore& store = KernelStore::instance();
    for (const Lane& lane : m_lanes) {
        const document::FrameSet frames = selectedFrames(lane);
        if (!frames.empty())
            states[lane.id.objectId] =
                document::withoutKeys(*store.state(lane.id.objectId), frames);
    }
    if (states.empty()) {
        emit noticed(tr("No key is selected: click one, or draw a rectangle around several"));
        return;
    }
    const auto count = static_cast<int>(m_selected.size());
    m_selected.clear();
    apply(states, count == 1 ? tr("Delete a key") : tr("Delete %1 keys").arg(count));
}

void TimelineKeys::moveSelected(qint64 by) {
    if (m_selected.empty() || by == 0) return;
    std::map<int, InstanceState> states;
    std::set<Key> moved;
    for (const Lane& lane : m_lanes) {
        const document::FrameSet frames = selectedFrames(lane);
        if (frames.empty()) continue;
        const auto state = KernelStore::instance().state(lane.id.objectId);
        states[lane.id.objectId] = document::withKeysMoved(*state, frames, by);
        for (const qint64 frame : frames) moved.insert({lane.id.objectId, frame + by});
    }
    const auto count = static_cast<int>(m_selected.size());
    m_selected.clear();
    apply(states, count == 1 ? tr("Move a key by %1 frames").arg(by)
                             : tr("Move %1 keys by %2 frames").arg(count).arg(by));
    setSelected(moved);
}

void TimelineKeys::copySelected() {
    QStringList lines;
    for (const Lane& lane : m_lanes) {
        const QString line =
            document::textOfKeys(lane.id.typeId, *KernelStore::instance().state(lane.id.objectId),
                                 selectedFrames(lane), m_catalog);
        if (!line.isEmpty()) lines << line;
    }
    if (lines.isEmpty())
        emit noticed(tr("No key is selected: click one, or draw a rectangle around several"));
    else
        QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void TimelineKeys::paste() {
    const QStringList lines =
        QApplication::clipboard()->text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    std::map<int, InstanceState> states;
    QStringList leftOut;
    try {
        // One text goes into every target lane; of several, each goes into the lane of its filter.
        for (const int index : targetLanes()) {
            const Lane& lane = m_lanes[static_cast<std::size_t>(index)];
            const QString key = KernelStore::instance().filterKey(lane.id.typeId);
            for (const QString& line : lines) {
                if (lines.size() > 1 && !line.startsWith(key + QLatin1Char(':'))) continue;
                states[lane.id.objectId] = document::withKeysFromText(
                    lane.id.typeId, *KernelStore::instance().state(lane.id.objectId), line,
                    m_state.currentFrame(), m_catalog, leftOut);
            }
        }
    } catch (const document::FilterError& error) {
        emit noticed(QString::fromUtf8(error.what()));
        return;
    }
    if (states.empty()) {
        emit noticed(tr("There is no lane for these keys: animate a filter first"));
        return;
    }
    apply(states, tr("Paste keys (frame %1)").arg(m_state.currentFrame()));
    leftOut.removeDuplicates();
    if (!leftOut.isEmpty())
        emit noticed(tr("Left out, for this filter has no such parameter: %1")
                         .arg(leftOut.join(QStringLiteral(", "))));
}

void TimelineKeys::goToKey(int direction) {
    const qint64 here = m_state.currentFrame();
    std::set<qint64> all;
    for (const Lane& lane : m_lanes) all.insert(lane.frames.begin(), lane.frames.end());
    if (direction > 0) {
        const auto next = all.upper_bound(here);
        if (next != all.end()) m_state.setCurrentFrame(*next);
    } else {
        auto previous = all.lower_bound(here);
        if (previous != all.begin()) m_state.setCurrentFrame(*--previous);
    }
}

QString TimelineKeys::textOf(Key key) const {
    for (const Lane& lane : m_lanes)
        if (lane.id.objectId == key.first)
            return document::textOfKeys(lane.id.typeId, *KernelStore::instance().state(key.first),
                                        {key.second}, m_catalog);
    return QString();
}

}  // namespace editor
