#include "framework/contract/FxKernelApi/HkKernelObjectDataDescr.h"

#include <algorithm>

#include "host/kernel/ParamValue.h"

HkKernelObjectDataDescr::HkKernelObjectDataDescr(int typeId, int paramCount)
    : m_typeId(typeId), m_params(std::max(paramCount, 0)) {}

HkKernelObjectDataDescr::~HkKernelObjectDataDescr() = default;

bool HkKernelObjectDataDescr::addParamDescr(unsigned int index, const QString& name,
                                            QMetaType::Type type, ParamDescr::KeyframeType kind) {
    if (index >= static_cast<unsigned int>(m_params.size())) return false;
    if (m_params.at(static_cast<int>(index)).type != QMetaType::UnknownType) return false;
    if (name.isEmpty() || indexOf(name) >= 0) return false;
    if (!isParamType(type)) return false;
    if (kind != ParamDescr::Interpolated && kind != ParamDescr::Stepped &&
        kind != ParamDescr::Constant)
        return false;
    m_params.replace(static_cast<int>(index), {name, type, kind, emptyParamValue(type)});
    return true;
}

HkParamKeyframeVector HkKernelObjectDataDescr::createKeyframeVector() const {
    HkParamKeyframeVector values;
    values.reserve(m_params.size());
    for (const ParamDescr& param : m_params) values.append(HkParamKeyframe(param.defaultValue));
    return values;
}

bool HkKernelObjectDataDescr::setValue(HkParamKeyframeVector& v, const QString& name,
                                       const QVariant& value) const {
    const int index = indexOf(name);
    if (index < 0 || v.size() != m_params.size()) return false;
    const auto converted = convertParamValue(value, m_params.at(index).type);
    if (!converted) return false;
    v[index].assign(*converted);
    return true;
}

int HkKernelObjectDataDescr::indexOf(const QString& name) const {
    for (int i = 0; i < m_params.size(); ++i)
        if (m_params.at(i).type != QMetaType::UnknownType && m_params.at(i).name == name) return i;
    return -1;
}
