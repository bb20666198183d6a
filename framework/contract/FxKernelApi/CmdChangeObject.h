#pragma once

#include "framework/contract/FxKernelApi/HkFXKernelCommand.h"
#include "framework/contract/FxKernelApi/HkParamKeyframe.h"

/// Changes parameter values of one instance: those entries of `values` that were assigned and
/// differ from what is in force. For an animated instance and a vector with a frame number they
/// become keys of that frame, otherwise the instance's own values: an instance that is not animated
/// has one value for all frames, a vector without frame number names no place for a key, and
/// Constant parameters never have keys. A key inside a held stretch is held like the one before it.
/// What is in force is taken at the first redo; an instance that does not exist is left alone.
///
/// merge true: a later command of the same gesture on the same object and frame joins this one into
/// one step, whichever parameters it changes, though never across a save point. A gesture is a
/// press of the mouse with all that follows up to its release, or keys or turns of the wheel in a
/// row; a change of focus or a second without either ends it. A parameter that is back at its old
/// value is no part of the step, and a step that changes nothing is dropped from the stack. The
/// text names the filter, the parameters and their old and new values.
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
