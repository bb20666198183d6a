#include "framework/contract/FxKernelApi/HkFXKernelData.h"

#include "host/kernel/KernelStore.h"

HkFXKernelData::HkFXKernelData() = default;

HkFXKernelData::~HkFXKernelData() = default;

HkFXKernelData* HkFXKernelData::getInstance() {
    static HkFXKernelData data;
    return &data;
}

bool HkFXKernelData::registerFilterType(HkFilterManipulator* manip, int typeId) {
    return KernelStore::instance().registerType(manip, typeId);
}

bool HkFXKernelData::registerDataDescriptor(HkKernelObjectDataDescr* descr, int typeId) {
    return KernelStore::instance().registerDescriptor(
        std::unique_ptr<HkKernelObjectDataDescr>(descr), typeId);
}

HkKernelObjectData* HkFXKernelData::getObject(int typeId, int objectId) {
    return KernelStore::instance().find(typeId, objectId);
}

const HkKernelObjectDataDescr* HkFXKernelData::getDataDescriptor(int typeId) {
    return KernelStore::instance().descriptor(typeId);
}
