// The operations of the kernel library that a manipulator calls. Those of the host's own calls,
// from inside that library, are not written down.

#include <dlfcn.h>

#include <QUndoStack>
#include <cstring>
#include <string>

#include "framework/contract/FxKernelApi/CmdChangeObject.h"
#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "tests/filters/Recorded.h"

using recorded::call;
using recorded::handOn;

namespace {

void note(const void* caller, const std::string& text) {
    Dl_info from;
    if (dladdr(caller, &from) != 0 && std::strcmp(from.dli_fname, FX_PLUGIN_FILE) == 0)
        recorded::note(text);
}

}  // namespace

void HkFilterManipulator::initManipulator(QToolBox* toolBox) {
    note(__builtin_return_address(0), "base");
    handOn<void>("_ZN19HkFilterManipulator15initManipulatorEP8QToolBox", this, toolBox);
}
bool HkFXKernelData::registerFilterType(HkFilterManipulator* manip, int typeId) {
    note(__builtin_return_address(0), call("registerFilterType", {typeId}));
    if (recorded::isFailing("registerFilterType")) return false;
    return handOn<bool>("_ZN14HkFXKernelData18registerFilterTypeEP19HkFilterManipulatori", this,
                        manip, typeId);
}
bool HkFXKernelData::registerDataDescriptor(HkKernelObjectDataDescr* descr, int typeId) {
    note(__builtin_return_address(0),
         call("registerDataDescriptor", {descr->typeId(), descr->paramCount(), typeId}));
    return handOn<bool>("_ZN14HkFXKernelData22registerDataDescriptorEP23HkKernelObjectDataDescri",
                        this, descr, typeId);
}
bool HkKernelObjectDataDescr::addParamDescr(unsigned int index, const QString& name,
                                            QMetaType::Type type, ParamDescr::KeyframeType kind) {
    note(__builtin_return_address(0),
         call("addParamDescr", {index, name.toStdString(), int(type), int(kind)}));
    return handOn<bool>(
        "_ZN23HkKernelObjectDataDescr13addParamDescrEjRK7QStringN9QMetaType4TypeE"
        "N10ParamDescr12KeyframeTypeE",
        this, index, &name, type, kind);
}
bool HkKernelObjectDataDescr::setValue(HkParamKeyframeVector& v, const QString& name,
                                       const QVariant& value) const {
    note(__builtin_return_address(0),
         call("setValue", {name.toStdString(), value.typeName(), value.toString().toStdString()}));
    if (recorded::isFailing(name.toStdString())) return false;
    return handOn<bool>(
        "_ZNK23HkKernelObjectDataDescr8setValueER21HkParamKeyframeVectorRK7QStringRK8QVariant",
        this, &v, &name, &value);
}
HkParamKeyframeVector HkKernelObjectData::getKeyframesAt(__int64 frame) const {
    note(__builtin_return_address(0), call("getKeyframesAt", {frame}));
    return handOn<HkParamKeyframeVector>("_ZNK18HkKernelObjectData14getKeyframesAtEx", this, frame);
}
void QUndoStack::push(QUndoCommand* command) {
    note(__builtin_return_address(0), "push");
    handOn<void>("_ZN10QUndoStack4pushEP12QUndoCommand", this, command);
}

// By its symbol: a constructor written here would make the base class's part twice.
extern "C" {
Q_DECL_EXPORT void makeCmdChangeObject(void* self, int typeId, int objectId,
                                       const HkParamKeyframeVector* values, bool merge)  //
    asm("_ZN15CmdChangeObjectC1EiiRK21HkParamKeyframeVectorb");

void makeCmdChangeObject(void* self, int typeId, int objectId, const HkParamKeyframeVector* values,
                         bool merge) {
    note(__builtin_return_address(0),
         call("CmdChangeObject", {typeId, values->frameNumber(), merge}));
    handOn<void>("_ZN15CmdChangeObjectC1EiiRK21HkParamKeyframeVectorb", self, typeId, objectId,
                 values, merge);
}
}
