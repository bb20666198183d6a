#pragma once

#include "framework/contract/FxKernelApi/HkKernelObjectData.h"
#include "framework/contract/FxKernelApi/HkKernelObjectDataDescr.h"

class HkFilterManipulator;

/// The one data store of the host: filter types with their descriptors, and the applied instances
/// with their keyframes.
///
/// getObject and HkKernelObjectData::getKeyframesAt may be called from render threads while the GUI
/// thread edits; all else belongs to the GUI thread. An object removed while a frame is rendered
/// stays valid until that frame is done.
class FXKERNELAPI_EXPORT HkFXKernelData {
public:
    static HkFXKernelData* getInstance();

    /// Records the manipulator of a type. False for a null manipulator, a type id below 1 or one
    /// that has a manipulator. The manipulator stays its owner's; the record, the descriptor and
    /// the type's instances go when the manipulator is destroyed.
    bool registerFilterType(HkFilterManipulator* manip, int typeId);

    /// Takes ownership of the descriptor, in every case. False, and the descriptor deleted, when it
    /// is null, was made for another type id, lacks a declared parameter, or the type has no
    /// manipulator, has a descriptor already, or a manipulator whose fillDefaultValues fails. On
    /// success the descriptor's defaults are those that this operation fills in.
    bool registerDataDescriptor(HkKernelObjectDataDescr* descr, int typeId);

    HkKernelObjectData* getObject(int typeId,
                                  int objectId);  ///< null when there is no such instance
    const HkKernelObjectDataDescr* getDataDescriptor(int typeId);  ///< null when none is registered

    quint32 currentFrame = 0;  ///< the frame shown in the editor

private:
    friend class KernelStore;
    HkFXKernelData();
    ~HkFXKernelData();
    HkFXKernelData(const HkFXKernelData&);
    HkFXKernelData& operator=(const HkFXKernelData&);
};
