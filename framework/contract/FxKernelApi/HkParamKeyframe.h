#pragma once

#include <QVariant>
#include <QVector>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// One parameter's value in a keyframe vector.
class FXKERNELAPI_EXPORT HkParamKeyframe {
public:
    HkParamKeyframe() {}
    explicit HkParamKeyframe(const QVariant& value) : m_value(value) {}

    const QVariant& getValue() const { return m_value; }

    /// True once a value was written into a fresh vector: only those entries are an edit, the
    /// others show a default.
    bool isAssigned() const { return m_assigned; }
    void assign(const QVariant& value) {
        m_value = value;
        m_assigned = true;
    }

private:
    QVariant m_value;
    bool m_assigned = false;
};

/// One value per parameter, indexed as the filter type declared them, and the frame they are the
/// keyframe of.
class FXKERNELAPI_EXPORT HkParamKeyframeVector : public QVector<HkParamKeyframe> {
public:
    enum { NoFrame = -1 };  ///< values without a keyframe: they belong to the whole object

    void setFrameNumber(__int64 frame) { m_frame = frame; }
    __int64 frameNumber() const { return m_frame; }

private:
    __int64 m_frame = NoFrame;
};
