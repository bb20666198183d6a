#pragma once

#include <QVector>

#include "framework/contract/FxKernelApi/HkParamKeyframe.h"
#include "framework/contract/FxKernelApi/ParamDescr.h"

/// The parameters of a filter type: names, types, kinds and defaults, in the order of its keyframe
/// vectors.
class FXKERNELAPI_EXPORT HkKernelObjectDataDescr {
public:
    /// A descriptor with room for paramCount parameters, none declared yet.
    HkKernelObjectDataDescr(int typeId, int paramCount);
    ~HkKernelObjectDataDescr();

    /// Declares parameter `index`. Its default is the type's empty value (0, false, "") until the
    /// kernel asks the registered manipulator for better. False, and nothing declared, for an index
    /// outside the count or declared before, an empty name or one in use, a type other than Bool,
    /// Int, Double and QString, or an unknown kind.
    bool addParamDescr(unsigned int index, const QString& name, QMetaType::Type type,
                       ParamDescr::KeyframeType kind);

    /// One entry per parameter holding its default, none assigned, frame number NoFrame.
    HkParamKeyframeVector createKeyframeVector() const;

    /// Assigns `value`, converted to the declared type, to the entry named `name`. False, and v
    /// unchanged, when the name is unknown, v has another number of entries, or the value does not
    /// fit the type: text that is no number, an Int out of range, a Double that is not finite.
    /// Fractions are rounded to the nearest Int.
    bool setValue(HkParamKeyframeVector& v, const QString& name, const QVariant& value) const;

    int typeId() const { return m_typeId; }
    int paramCount() const { return m_params.size(); }
    const ParamDescr& param(int index) const { return m_params.at(index); }
    int indexOf(const QString& name) const;  ///< -1 when no parameter has that name

private:
    friend class KernelStore;  ///< fills the defaults when the type is registered
    int m_typeId;
    QVector<ParamDescr> m_params;
};
