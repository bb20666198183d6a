#pragma once

#include <QObject>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// Announces what happened in the data store, after it happened. Emits on the GUI thread.
class FXKERNELAPI_EXPORT KernelNotifier : public QObject {
    Q_OBJECT

public:
    static KernelNotifier* instance();

signals:
    void signalMediaLoaded();                      ///< the host has opened other media
    void objectAdded(int typeId, int objectId);    ///< orderChanged() follows
    void objectRemoved(int typeId, int objectId);  ///< orderChanged() follows
    void objectChanged(int typeId, int objectId);  ///< values, keys, or animated or not
    void orderChanged();
    void currentFrameChanged(quint32 frame);

private:
    KernelNotifier() = default;
};
