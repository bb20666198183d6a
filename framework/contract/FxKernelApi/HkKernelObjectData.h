#pragma once

#include "framework/contract/FxKernelApi/HkParamKeyframe.h"

/// The keyframed data of one applied filter instance. Owned by the kernel; reachable through
/// HkFXKernelData::getObject.
class FXKERNELAPI_EXPORT HkKernelObjectData {
public:
    /// The values in force at `frame`, indexed as declared, tagged with `frame`. May be called from
    /// any thread; the caller gets a copy that later edits do not touch.
    HkParamKeyframeVector getKeyframesAt(__int64 frame) const;

    bool animated = false;  ///< keyframed over time; read and written on the GUI thread only

private:
    friend class KernelStore;
    struct Private;
    HkKernelObjectData(int typeId, int objectId);
    ~HkKernelObjectData();
    HkKernelObjectData(const HkKernelObjectData&);
    HkKernelObjectData& operator=(const HkKernelObjectData&);
    Private* d;
};
