#include "host/document/FilterCatalog.h"

#include <QUndoStack>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "host/document/FilterError.h"
#include "host/document/NearestName.h"
#include "host/kernel/KernelStore.h"

namespace document {

namespace {

/// "; did you mean "a"? valid: "a", "b"", as much of it as there is to say.
QString choiceHint(const QString& typed, const QStringList& choices) {
    const QString nearest = nearestName(typed, choices);
    QString hint = QStringLiteral("; ");
    if (!nearest.isNull()) hint += QStringLiteral("did you mean \"%1\"? ").arg(nearest);
    return hint + QStringLiteral("valid: ") + quotedList(choices);
}

}  // namespace

QStringList FilterCatalog::keys() const {
    QStringList keys;
    for (int typeId : KernelStore::instance().types())
        keys.append(KernelStore::instance().filterKey(typeId));
    return keys;
}

int FilterCatalog::typeOf(const QString& key) const {
    const int typeId = KernelStore::instance().typeOfKey(key);
    if (key.isEmpty() || typeId == 0)
        throw FilterError(
            QStringLiteral("there is no filter \"%1\"%2").arg(key, choiceHint(key, keys())));
    return typeId;
}

const HkKernelObjectDataDescr& FilterCatalog::descriptor(int typeId) const {
    return *HkFXKernelData::getInstance()->getDataDescriptor(typeId);
}

QStringList FilterCatalog::parameterNames(int typeId) const {
    const HkKernelObjectDataDescr& descr = descriptor(typeId);
    QStringList names;
    for (int index = 0; index < descr.paramCount(); ++index) names.append(descr.param(index).name);
    return names;
}

int FilterCatalog::parameterIndex(int typeId, const QString& name) const {
    const int index = descriptor(typeId).indexOf(name);
    if (index < 0)
        throw FilterError(QStringLiteral("%1: there is no parameter \"%2\"%3")
                              .arg(KernelStore::instance().filterKey(typeId), name,
                                   choiceHint(name, parameterNames(typeId))));
    return index;
}

std::optional<ParameterRange> FilterCatalog::range(int typeId, int paramIndex) const {
    if (isSwitch(descriptor(typeId), paramIndex)) return ParameterRange{0, 1};
    auto known = m_ranges.find(typeId);
    if (known == m_ranges.end()) {
        known = m_ranges.emplace(typeId, pageRanges(typeId)).first;
        m_undoStack.clear();
    }
    return known->second.at(static_cast<std::size_t>(paramIndex));
}

bool FilterCatalog::isSwitch(const HkKernelObjectDataDescr& descr, int paramIndex) {
    return paramIndex == 0 && descr.param(0).name == QLatin1String("Enabled") &&
           descr.param(0).type == QMetaType::Int;
}

}  // namespace document
