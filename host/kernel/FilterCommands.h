#pragma once

#include "framework/contract/FxKernelApi/HkFXKernelCommand.h"
#include "host/kernel/KernelStore.h"

// The undoable steps on whole filter instances. Each does nothing, and drops itself from the stack,
// when its first redo finds nothing to change; and does nothing when its instance is gone.

/// Applies a filter: an instance with the defaults at the end of the order. Undone and redone, it
/// keeps its object id.
class CmdAddFilter : public HkFXKernelCommand {
public:
    explicit CmdAddFilter(int typeId);
    void undo() override;
    void redo() override;
    int objectId() const { return m_id.objectId; }  ///< -1 before the first redo, or when it failed

private:
    InstanceId m_id;
    InstanceState m_state;
    int m_position = -1;
};

class CmdRemoveFilter : public HkFXKernelCommand {
public:
    explicit CmdRemoveFilter(InstanceId id);
    void undo() override;
    void redo() override;

private:
    InstanceId m_id;
    InstanceState m_state;
    int m_position = -1;
};

/// Moves an instance to `position` in the new order.
class CmdMoveFilter : public HkFXKernelCommand {
public:
    CmdMoveFilter(InstanceId id, int position);
    void undo() override;
    void redo() override;

private:
    InstanceId m_id;
    int m_from;
    int m_to;
};

/// Gives an instance another state; `action` says in the text what that does to the filter.
class CmdSetFilterState : public HkFXKernelCommand {
public:
    CmdSetFilterState(InstanceId id, const InstanceState& state, const QString& action);
    void undo() override;
    void redo() override;

private:
    InstanceId m_id;
    InstanceState m_before;
    InstanceState m_after;
};
