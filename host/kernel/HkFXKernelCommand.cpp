#include "framework/contract/FxKernelApi/HkFXKernelCommand.h"

HkFXKernelCommand::HkFXKernelCommand() = default;

HkFXKernelCommand::~HkFXKernelCommand() = default;

int HkFXKernelCommand::id() const {
    return -1;
}

bool HkFXKernelCommand::mergeWith(const QUndoCommand* other) {
    // The stack hands over its own command as const, although it deletes it right afterwards.
    auto* newer = dynamic_cast<HkFXKernelCommand*>(const_cast<QUndoCommand*>(other));
    return newer && newer->mergeMeWith(this);
}

bool HkFXKernelCommand::mergeMeWith(QUndoCommand*) {
    return false;
}
