#include "framework/contract/FxKernelApi/HkKernelObjectData.h"

#include "host/kernel/HkKernelObjectDataPrivate.h"
#include "host/kernel/KernelStore.h"

HkKernelObjectData::HkKernelObjectData(int typeId, int objectId)
    : d(new Private{typeId, objectId, nullptr, {}}) {}

HkKernelObjectData::~HkKernelObjectData() {
    delete d;
}

HkParamKeyframeVector HkKernelObjectData::getKeyframesAt(__int64 frame) const {
    return KernelStore::instance().valuesAt(*this, frame);
}
