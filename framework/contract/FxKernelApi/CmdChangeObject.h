#pragma once

#include "framework/contract/FxKernelApi/HkFXKernelCommand.h"
#include "framework/contract/FxKernelApi/HkParamKeyframe.h"

/// Changes parameter values of one instance: those entries of `values` that were assigned and
/// differ from what is in force at the vector's frame. With a frame number they become keys of that
/// frame, otherwise the object's own values.
///
/// merge true: a later command on the same object, frame and set of changed parameters joins this
/// one into one step, though never across a save point or a mouse release. A step that changes
/// nothing is dropped from the stack. The text names the filter, the parameters and their old and
/// new values.
class FXKERNELAPI_EXPORT CmdChangeObject : public HkFXKernelCommand {
public:
    CmdChangeObject(int typeId, int objectId, const HkParamKeyframeVector& values, bool merge);
    ~CmdChangeObject() override;

    void undo() override;
    void redo() override;
    int id() const override;
    bool mergeWith(const QUndoCommand* other) override;
    bool mergeMeWith(QUndoCommand* earlier) override;

private:
    CmdChangeObject(const CmdChangeObject&);
    CmdChangeObject& operator=(const CmdChangeObject&);
    struct Private;
    Private* d;
};
