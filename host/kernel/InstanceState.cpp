#include "host/kernel/InstanceState.h"

#include <iterator>

#include "host/kernel/ParamValue.h"

InstanceState defaultState(const HkKernelObjectDataDescr& descr) {
    InstanceState state;
    for (int i = 0; i < descr.paramCount(); ++i)
        state.params.push_back({descr.param(i).defaultValue, {}});
    return state;
}

bool stateFits(const InstanceState& state, const HkKernelObjectDataDescr& descr) {
    if (state.params.size() != static_cast<std::size_t>(descr.paramCount())) return false;
    for (int i = 0; i < descr.paramCount(); ++i) {
        const ParamDescr& declared = descr.param(i);
        const InstanceParam& param = state.params[i];
        if (param.base.userType() != declared.type) return false;
        if (declared.kind == ParamDescr::Constant && !param.keys.empty()) return false;
        for (const auto& [frame, key] : param.keys) {
            if (key.value.userType() != declared.type) return false;
            if (declared.kind == ParamDescr::Stepped && !key.held) return false;
        }
    }
    return true;
}

QVariant valueInForce(const InstanceState& state, const HkKernelObjectDataDescr& descr, int index,
                      qint64 frame) {
    const InstanceParam& param = state.params[index];
    if (!state.animated || param.keys.empty() || descr.param(index).kind == ParamDescr::Constant)
        return param.base;
    const auto next = param.keys.upper_bound(frame);
    if (next == param.keys.begin()) return next->second.value;
    const auto& [lastFrame, lastKey] = *std::prev(next);
    if (next == param.keys.end() || lastKey.held || lastFrame == frame) return lastKey.value;
    return interpolateParamValue(lastKey.value, lastFrame, next->second.value, next->first, frame);
}

bool normaliseEdit(ParamEdit& edit, const HkKernelObjectDataDescr& descr) {
    if (edit.index < 0 || edit.index >= descr.paramCount()) return false;
    const ParamDescr& declared = descr.param(edit.index);
    if (edit.frame && declared.kind == ParamDescr::Constant) return false;
    if (!edit.key) return edit.frame.has_value();
    const auto value = convertParamValue(edit.key->value, declared.type);
    if (!value) return false;
    edit.key->value = *value;
    if (declared.kind == ParamDescr::Stepped) edit.key->held = true;
    return true;
}

ParamEdit applyEdit(InstanceState& state, const ParamEdit& edit) {
    InstanceParam& param = state.params[edit.index];
    ParamEdit inverse{edit.index, edit.frame, std::nullopt};
    if (!edit.frame) {
        inverse.key = ParamKey{param.base, false};
        param.base = edit.key->value;
        return inverse;
    }
    const auto existing = param.keys.find(*edit.frame);
    if (existing != param.keys.end()) inverse.key = existing->second;
    if (edit.key)
        param.keys.insert_or_assign(*edit.frame, *edit.key);
    else if (existing != param.keys.end())
        param.keys.erase(existing);
    return inverse;
}

InstanceState withAnimation(const InstanceState& state, const HkKernelObjectDataDescr& descr,
                            bool animated, qint64 frame) {
    InstanceState changed = state;
    changed.animated = animated;
    for (int i = 0; i < descr.paramCount(); ++i) {
        const ParamDescr::KeyframeType kind = descr.param(i).kind;
        if (kind == ParamDescr::Constant) continue;
        InstanceParam& param = changed.params[i];
        const QVariant value = valueInForce(state, descr, i, frame);
        param.keys.clear();
        if (animated)
            param.keys[frame] = {value, kind == ParamDescr::Stepped};
        else
            param.base = value;
    }
    return changed;
}
