#include "host/kernel/FilterCommands.h"

#include <QCoreApplication>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"

namespace {

struct FilterCommands {
    Q_DECLARE_TR_FUNCTIONS(FilterCommands)
};

QString titleOf(int typeId) {
    HkFilterManipulator* manipulator = KernelStore::instance().manipulator(typeId);
    return manipulator ? manipulator->filterTitle() : QString();
}

}  // namespace

CmdAddFilter::CmdAddFilter(int typeId) : m_id{typeId, -1} {
    setText(FilterCommands::tr("Add %1").arg(titleOf(typeId)));
}

void CmdAddFilter::redo() {
    KernelStore& store = KernelStore::instance();
    if (m_id.objectId >= 0) {
        store.restore(m_id, m_state, m_position);
        return;
    }
    m_id.objectId = store.add(m_id.typeId);
    setObsolete(m_id.objectId < 0);
}

void CmdAddFilter::undo() {
    KernelStore& store = KernelStore::instance();
    const auto state = store.state(m_id.objectId);
    if (!state) return;
    m_state = *state;
    m_position = store.positionOf(m_id.objectId);
    store.remove(m_id.objectId);
}

CmdRemoveFilter::CmdRemoveFilter(InstanceId id) : m_id(id) {
    setText(FilterCommands::tr("Remove %1").arg(KernelStore::instance().nameOf(id.objectId)));
}

void CmdRemoveFilter::redo() {
    KernelStore& store = KernelStore::instance();
    const auto state = store.state(m_id.objectId);
    setObsolete(!state);
    if (!state) return;
    m_state = *state;
    m_position = store.positionOf(m_id.objectId);
    store.remove(m_id.objectId);
}

void CmdRemoveFilter::undo() {
    KernelStore::instance().restore(m_id, m_state, m_position);
}

CmdMoveFilter::CmdMoveFilter(InstanceId id, int position)
    : m_id(id), m_from(KernelStore::instance().positionOf(id.objectId)), m_to(position) {
    setText((m_to < m_from ? FilterCommands::tr("Move %1 up") : FilterCommands::tr("Move %1 down"))
                .arg(KernelStore::instance().nameOf(id.objectId)));
}

void CmdMoveFilter::redo() {
    setObsolete(m_from < 0 || m_from == m_to);
    if (!isObsolete()) KernelStore::instance().move(m_id.objectId, m_to);
}

void CmdMoveFilter::undo() {
    KernelStore::instance().move(m_id.objectId, m_from);
}

CmdSetFilterState::CmdSetFilterState(InstanceId id, const InstanceState& state,
                                     const QString& action)
    : m_id(id), m_after(state) {
    setText(KernelStore::instance().nameOf(id.objectId) + QLatin1String(": ") + action);
}

void CmdSetFilterState::redo() {
    KernelStore& store = KernelStore::instance();
    const auto before = store.state(m_id.objectId);
    setObsolete(!before || *before == m_after);
    if (isObsolete()) return;
    m_before = *before;
    store.setState(m_id.objectId, m_after);
}

void CmdSetFilterState::undo() {
    KernelStore::instance().setState(m_id.objectId, m_before);
}
