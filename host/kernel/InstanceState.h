#pragma once

#include <QStringList>
#include <QVariant>
#include <map>
#include <optional>
#include <vector>

#include "framework/contract/FxKernelApi/HkKernelObjectDataDescr.h"

/// One keyframe of one parameter.
struct ParamKey {
    QVariant value;     ///< of the parameter's declared type
    bool held = false;  ///< the value stays until the next key although the kind is Interpolated
};
inline bool operator==(const ParamKey& a, const ParamKey& b) {
    return a.held == b.held && a.value == b.value;
}

using ParamTrack = std::map<qint64, ParamKey>;  ///< by frame

/// What one instance holds of one parameter.
struct InstanceParam {
    QVariant base;    ///< in force while the instance is not animated or the parameter has no keys
    ParamTrack keys;  ///< empty for a Constant parameter; all held for a Stepped one
};
inline bool operator==(const InstanceParam& a, const InstanceParam& b) {
    return a.base == b.base && a.keys == b.keys;
}

/// The parameter with which every filter type begins: "Enabled", a Constant that reads as a bool.
constexpr int kEnabledParam = 0;

/// All that the store keeps of one applied filter instance.
struct InstanceState {
    QString name;  ///< what the user calls it; empty for the filter's title
    bool animated = false;
    std::vector<InstanceParam> params;  ///< indexed as declared
    /// Elements of a document that this version of the filter does not know, as text, to be written
    /// back.
    QStringList keptElements;
};
inline bool operator==(const InstanceState& a, const InstanceState& b) {
    return a.name == b.name && a.animated == b.animated && a.params == b.params &&
           a.keptElements == b.keptElements;
}

/// One change of one parameter: of its base value, or of its key at a frame.
struct ParamEdit {
    int index = -1;
    std::optional<qint64> frame;  ///< none: the base value
    std::optional<ParamKey> key;  ///< none: the key at `frame` goes
};

/// The state of an instance that was not touched yet: every parameter has its default.
FXKERNELAPI_EXPORT InstanceState defaultState(const HkKernelObjectDataDescr& descr);

/// True when the state fits the descriptor: as many parameters, values of the declared types, no
/// keys of Constant parameters, only held keys of Stepped ones.
FXKERNELAPI_EXPORT bool stateFits(const InstanceState& state, const HkKernelObjectDataDescr& descr);

/// The value in force. Before the first and after the last key their values are held.
FXKERNELAPI_EXPORT QVariant valueInForce(const InstanceState& state,
                                         const HkKernelObjectDataDescr& descr, int index,
                                         qint64 frame);

/// Makes the edit fit the descriptor: converts the value to the declared type and holds keys of
/// Stepped parameters. False when it cannot be done: unknown index, value that does not convert,
/// key of a Constant parameter, base value that would go.
bool normaliseEdit(ParamEdit& edit, const HkKernelObjectDataDescr& descr);

/// Applies a normalised edit and returns the edit that takes it back exactly.
ParamEdit applyEdit(InstanceState& state, const ParamEdit& edit);

/// The state with keyframing switched on, where the values in force at `frame` become the only
/// keys, or off, where they stay for all frames and the keys go.
InstanceState withAnimation(const InstanceState& state, const HkKernelObjectDataDescr& descr,
                            bool animated, qint64 frame);
