#include "host/document/Keyframes.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/document/FilterError.h"
#include "host/document/FilterSettings.h"
#include "host/document/FilterText.h"
#include "host/kernel/KernelStore.h"

namespace document {

FrameSet keyFrames(const InstanceState& state) {
    FrameSet frames;
    for (const InstanceParam& param : state.params)
        for (const auto& [frame, key] : param.keys) frames.insert(frame);
    return frames;
}

InstanceState withKeyAt(const InstanceState& state, const HkKernelObjectDataDescr& descr,
                        qint64 frame) {
    InstanceState result = state;
    for (int index = 0; index < descr.paramCount(); ++index) {
        if (descr.param(index).kind == ParamDescr::Constant) continue;
        ParamTrack& keys = result.params[static_cast<std::size_t>(index)].keys;
        if (keys.count(frame)) continue;
        // Inside a held stretch the new key is held like the one before it.
        const auto next = keys.upper_bound(frame);
        const bool held = descr.param(index).kind == ParamDescr::Stepped ||
                          (next != keys.begin() && std::prev(next)->second.held);
        keys[frame] = ParamKey{valueInForce(state, descr, index, frame), held};
    }
    return result;
}

InstanceState withoutKeys(const InstanceState& state, const FrameSet& frames) {
    InstanceState result = state;
    for (InstanceParam& param : result.params) {
        for (const qint64 frame : frames) {
            const auto key = param.keys.find(frame);
            if (key == param.keys.end()) continue;
            if (param.keys.size() == 1) param.base = key->second.value;
            param.keys.erase(key);
        }
    }
    return result;
}

InstanceState withKeysMoved(const InstanceState& state, const FrameSet& frames, qint64 by) {
    if (frames.empty()) return state;
    const qint64 most = std::numeric_limits<qint64>::max();
    by = std::max(by, -std::max(*frames.begin(), -most));
    by = std::min(by, most - std::max<qint64>(*frames.rbegin(), 0));
    InstanceState result = state;
    for (InstanceParam& param : result.params) {
        ParamTrack moved;
        for (const qint64 frame : frames) {
            const auto key = param.keys.find(frame);
            if (key == param.keys.end()) continue;
            moved[frame + by] = key->second;
            param.keys.erase(key);
        }
        for (auto& [frame, key] : moved) param.keys[frame] = key;
    }
    return result;
}

QString textOfKeys(int typeId, const InstanceState& state, const FrameSet& frames,
                   const FilterCatalog& catalog) {
    const HkKernelObjectDataDescr& descr = catalog.descriptor(typeId);
    QStringList parameters;
    for (int index = 0; index < descr.paramCount(); ++index) {
        ParamTrack chosen;
        for (const auto& [frame, key] : state.params[static_cast<std::size_t>(index)].keys)
            if (frames.count(frame)) chosen[frame] = key;
        if (!chosen.empty())
            parameters << descr.param(index).name + QLatin1Char('=') + textFromKeys(chosen);
    }
    if (parameters.isEmpty()) return QString();
    return KernelStore::instance().filterKey(typeId) + QLatin1Char(':') +
           parameters.join(QLatin1Char(','));
}

std::optional<qint64> earliestKey(const QString& text) {
    std::optional<qint64> earliest;
    const FilterText filter = parseFilterText(text);
    for (const ParameterText& parameter : filter.parameters)
        if (parameter.animated)  // its keys ascend
            earliest = std::min(earliest.value_or(parameter.values.front().frame),
                                parameter.values.front().frame);
    return earliest;
}

InstanceState withKeysFromText(int typeId, const InstanceState& state, const QString& text,
                               qint64 by, const FilterCatalog& catalog, QStringList& leftOut) {
    FilterText filter = parseFilterText(text);
    const HkKernelObjectDataDescr& descr = catalog.descriptor(typeId);
    QStringList known;
    for (int index = 0; index < descr.paramCount(); ++index) known << descr.param(index).name;
    QVector<ParameterText> fitting;
    bool hasKeys = false;
    for (const ParameterText& parameter : std::as_const(filter.parameters)) {
        if (!parameter.animated) continue;
        hasKeys = true;
        if (known.contains(parameter.name))
            fitting.append(parameter);
        else
            leftOut << parameter.name;
    }
    if (!hasKeys)
        throw FilterError(QStringLiteral("the clipboard holds no keys; copy some in the timeline, "
                                         "or a text such as \"%1:%2=0=1;20=9\"")
                              .arg(KernelStore::instance().filterKey(typeId), known.value(1)));
    if (fitting.isEmpty())
        throw FilterError(QStringLiteral("none of the copied keys is of a parameter that \"%1\" "
                                         "has (%2)")
                              .arg(KernelStore::instance().filterKey(typeId),
                                   known.mid(1).join(QStringLiteral(", "))));
    filter.key = KernelStore::instance().filterKey(typeId);
    filter.parameters = fitting;
    const InstanceState pasted = settingsFromText(filter, catalog);
    InstanceState result = state;
    result.animated = true;
    for (std::size_t index = 0; index < result.params.size(); ++index)
        for (const auto& [at, key] : pasted.params[index].keys)
            result.params[index].keys[at + by] = key;
    return result;
}

}  // namespace document
