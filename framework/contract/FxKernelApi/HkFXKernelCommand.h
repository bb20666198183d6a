#pragma once

#include <QUndoCommand>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// An undoable step on the data store. Undo and redo announce what they changed, so that pages show
/// it.
class FXKERNELAPI_EXPORT HkFXKernelCommand : public QUndoCommand {
public:
    ~HkFXKernelCommand() override;

    void undo() override = 0;
    void redo() override = 0;
    int id() const override;  ///< -1: never merged
    bool mergeWith(const QUndoCommand* other)
        override;  ///< asks `other`, the newer, to merge itself into this one

    /// Merges this command, the newer, into `earlier`, which then stands for both. False when they
    /// stay two steps.
    virtual bool mergeMeWith(QUndoCommand* earlier);

protected:
    HkFXKernelCommand();
};
