#pragma once

#include <memory>

#include "framework/contract/FxKernelApi/HkKernelObjectData.h"
#include "host/kernel/InstanceState.h"

/// Written by KernelStore under its lock; the descriptor never changes once it is here.
struct HkKernelObjectData::Private {
    int typeId;
    int objectId;
    std::shared_ptr<const HkKernelObjectDataDescr> descr;
    InstanceState state;
};
