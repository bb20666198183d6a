#pragma once

#include <QVariant>
#include <initializer_list>
#include <vector>

#include "framework/BestEffort.h"
#include "framework/contract/FxKernelApi/HkKernelObjectDataDescr.h"

/// One parameter of a filter: the only place that knows its name, type, keyframing and default.
struct ParameterRow {
    int index;  ///< its place in the keyframe vector
    const char* name;
    QMetaType::Type type;
    ParamDescr::KeyframeType kind;
    QVariant defaultValue;
};

/// Every filter's first parameter. An integer that is read as a truth value, so that any number but
/// 0 enables.
enum { EnabledParameter = 0 };

/// A filter's parameters. Everybody else names a parameter by its index.
class ParameterTable {
public:
    /// The rows of the parameters after "Enabled", in the order in which their defaults are
    /// written. Indices that are not 1, 2, 3 ..., each once, end the program: no filter could work
    /// with them.
    ParameterTable(std::initializer_list<ParameterRow> rowsAfterEnabled);

    int count() const { return static_cast<int>(m_rows.size()); }
    const ParameterRow& row(int index) const;                                ///< by index
    const std::vector<ParameterRow>& writtenRows() const { return m_rows; }  ///< as written

private:
    std::vector<ParameterRow> m_rows;
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

/// Writes an edit's values into a keyframe vector, by parameter index.
class ValueWriter {
public:
    ValueWriter(const ParameterTable& parameters, const HkKernelObjectDataDescr& descriptor,
                HkParamKeyframeVector& keyframes)
        : m_parameters(parameters), m_descriptor(descriptor), m_keyframes(keyframes) {}

    /// A value the descriptor does not take is passed over: the rest of the edit still counts.
    void set(int index, const QVariant& value) {
        bestEffort(m_descriptor.setValue(m_keyframes,
                                         QString::fromLatin1(m_parameters.row(index).name), value));
    }

private:
    const ParameterTable& m_parameters;
    const HkKernelObjectDataDescr& m_descriptor;
    HkParamKeyframeVector& m_keyframes;
};
