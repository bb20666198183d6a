#pragma once

#include <QVariant>
#include <initializer_list>
#include <vector>

#include "framework/contract/FxKernelApi/HkKernelObjectDataDescr.h"

/// One parameter of a filter: the only place that knows its name, type, keyframing and default.
struct ParameterRow {
    const char* name;
    QMetaType::Type type;
    ParamDescr::KeyframeType kind;
    QVariant defaultValue;
};

/// Every filter's first parameter. An integer that is read as a truth value, so that any number but
/// 0 enables.
enum { EnabledParameter = 0 };

/// A filter's parameters in index order, which is the order of its keyframe vectors. "Enabled" is
/// put in front.
class ParameterTable {
public:
    /// defaultsOrder: the indices in the order in which defaults are written, where it differs from
    /// the index order.
    ParameterTable(std::initializer_list<ParameterRow> rowsAfterEnabled,
                   std::initializer_list<int> defaultsOrder = std::initializer_list<int>());

    int count() const { return static_cast<int>(m_rows.size()); }
    const ParameterRow& row(int index) const { return m_rows[static_cast<std::size_t>(index)]; }
    const std::vector<int>& defaultsOrder() const { return m_defaultsOrder; }

private:
    std::vector<ParameterRow> m_rows;
    std::vector<int> m_defaultsOrder;
};

/// The values of one instance at one frame, read by parameter index.
class ParameterValues {
public:
    explicit ParameterValues(const HkParamKeyframeVector& keyframes) : m_keyframes(keyframes) {}

    bool toBool(int index) const { return m_keyframes.at(index).getValue().toBool(); }
    int toInt(int index) const { return m_keyframes.at(index).getValue().toInt(); }
    double toDouble(int index) const { return m_keyframes.at(index).getValue().toDouble(); }

private:
    HkParamKeyframeVector m_keyframes;
};

/// Writes an edit's values into a keyframe vector, by parameter name.
class ValueWriter {
public:
    ValueWriter(const HkKernelObjectDataDescr& descriptor, HkParamKeyframeVector& keyframes)
        : m_descriptor(descriptor), m_keyframes(keyframes) {}

    /// A name the descriptor does not know is passed over: the rest of the edit still counts.
    void set(const char* name, const QVariant& value) {
        static_cast<void>(m_descriptor.setValue(m_keyframes, QString::fromLatin1(name), value));
    }

private:
    const HkKernelObjectDataDescr& m_descriptor;
    HkParamKeyframeVector& m_keyframes;
};
