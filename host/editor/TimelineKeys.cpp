#include "host/editor/TimelineKeys.h"

#include <QApplication>
#include <QClipboard>
#include <algorithm>
#include <iterator>
#include <optional>

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

void TimelineKeys::toggleSelected(int lane) {
    const Key key{m_lanes.at(static_cast<std::size_t>(lane)).id.objectId, m_state.currentFrame()};
    std::set<Key> selected = m_selected;
    if (!selected.erase(key)) selected.insert(key);
    setSelected(selected);
    if (m_selected.empty() && !selected.empty())
        emit noticed(tr("There is no key at this frame: Insert makes one"));
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
        emit noticed(
            tr("No key is selected: click one, draw a rectangle around several, or go to one and "
               "press Return"));
        return;
    }
    const auto count = static_cast<int>(m_selected.size());
    m_selected.clear();
    apply(states, count == 1 ? tr("Delete a key") : tr("Delete %1 keys").arg(count));
}

/// Keys that went out of the frames could be neither seen nor taken hold of.
qint64 TimelineKeys::withinFrames(qint64 by) const {
    const auto& frames = m_state.frames();
    if (frames.empty() || m_selected.empty()) return 0;
    qint64 earliest = m_selected.begin()->second, latest = earliest;
    for (const Key& key : m_selected) {
        earliest = std::min(earliest, key.second);
        latest = std::max(latest, key.second);
    }
    return std::clamp<qint64>(by, std::min<qint64>(0, frames.front() - earliest),
                              std::max<qint64>(0, frames.back() - latest));
}

void TimelineKeys::moveSelected(qint64 by) {
    by = withinFrames(by);
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
        emit noticed(
            tr("No key is selected: click one, draw a rectangle around several, or go to one and "
               "press Return"));
    else
        QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void TimelineKeys::paste() {
    const QStringList lines =
        QApplication::clipboard()->text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    std::map<int, InstanceState> states;
    QStringList leftOut;
    try {
        const std::map<int, QString> texts = textsForLanes(lines);
        // What was copied together keeps its distances.
        std::optional<qint64> earliest;
        for (const auto& [index, text] : texts)
            if (const auto first = document::earliestKey(text))
                earliest = std::min(earliest.value_or(*first), *first);
        const qint64 by = m_state.currentFrame() - earliest.value_or(0);
        for (const auto& [index, text] : texts) {
            const Lane& lane = m_lanes[static_cast<std::size_t>(index)];
            states[lane.id.objectId] = document::withKeysFromText(
                lane.id.typeId, *KernelStore::instance().state(lane.id.objectId), text, by,
                m_catalog, leftOut);
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

/// By lane. One text goes into every target lane; of several, each goes into the lanes of its own
/// filter, in turn where several are of one.
std::map<int, QString> TimelineKeys::textsForLanes(const QStringList& lines) const {
    std::map<int, QString> texts;
    std::map<int, int> lanesOfType;
    for (const int index : targetLanes()) {
        const int typeId = m_lanes[static_cast<std::size_t>(index)].id.typeId;
        const QString key = KernelStore::instance().filterKey(typeId) + QLatin1Char(':');
        QStringList own;
        for (const QString& line : lines)
            if (lines.size() == 1 || line.startsWith(key)) own << line;
        if (!own.isEmpty())
            texts[index] = own.at(lanesOfType[typeId]++ % static_cast<int>(own.size()));
    }
    return texts;
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
