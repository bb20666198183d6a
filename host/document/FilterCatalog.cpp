#include "host/document/FilterCatalog.h"

#include <algorithm>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/FilterError.h"
#include "host/document/NearestName.h"
#include "host/kernel/KernelStore.h"

namespace document {

namespace {

/// "; did you mean "a"? valid: VALID", as much of it as there is to say.
QString choiceHint(const QString& typed, const QStringList& choices, const QString& valid) {
    const QString nearest = nearestName(typed, choices);
    QString hint = QStringLiteral("; ");
    if (!nearest.isNull()) hint += QStringLiteral("did you mean \"%1\"? ").arg(nearest);
    return hint + QStringLiteral("valid: ") + valid;
}

bool isSameName(const QString& a, const QString& b) {
    return !a.isEmpty() && a.compare(b, Qt::CaseInsensitive) == 0;
}

/// Where `name` is in the list, in any case.
std::vector<int> placesOf(const QString& name, const QStringList& names) {
    std::vector<int> places;
    for (int i = 0; i < names.size(); ++i)
        if (isSameName(names[i], name)) places.push_back(i);
    return places;
}

[[noreturn]] void refuseAmbiguous(const QString& where, const QString& name,
                                  const std::vector<int>& places, const QStringList& names) {
    QStringList meant;
    for (int place : places) meant.append(names[place]);
    throw FilterError(QStringLiteral("%1\"%2\" may mean %3").arg(where, name, quotedList(meant)));
}

QString titleOf(int typeId) {
    return KernelStore::instance().manipulator(typeId)->filterTitle();
}

}  // namespace

QStringList FilterCatalog::keys() const {
    QStringList keys;
    for (int typeId : KernelStore::instance().types())
        keys.append(KernelStore::instance().filterKey(typeId));
    return keys;
}

int FilterCatalog::typeOf(const QString& keyOrTitle) const {
    if (const int exact = KernelStore::instance().typeOfKey(keyOrTitle)) return exact;
    const std::vector<int> types = KernelStore::instance().types();
    const QStringList allKeys = keys();
    QStringList titles;
    for (int typeId : types) titles.append(titleOf(typeId));

    std::vector<int> places = placesOf(keyOrTitle, allKeys);
    if (places.empty()) places = placesOf(keyOrTitle, titles);
    if (places.empty())
        throw FilterError(
            QStringLiteral("there is no filter \"%1\"%2")
                .arg(keyOrTitle, choiceHint(keyOrTitle, allKeys + titles, quotedList(allKeys))));
    if (places.size() > 1) refuseAmbiguous(QString(), keyOrTitle, places, allKeys);
    return types[static_cast<std::size_t>(places.front())];
}

const HkKernelObjectDataDescr& FilterCatalog::descriptor(int typeId) const {
    return *HkFXKernelData::getInstance()->getDataDescriptor(typeId);
}

int FilterCatalog::parameterIndex(int typeId, const QString& nameOrLabel) const {
    const HkKernelObjectDataDescr& descr = descriptor(typeId);
    if (const int exact = descr.indexOf(nameOrLabel); exact >= 0) return exact;
    QStringList names, labels, shown;
    for (int index = 0; index < descr.paramCount(); ++index) {
        names.append(descr.param(index).name);
        labels.append(facts(typeId, index).label);
        shown.append('"' + names.last() + '"');
        if (!labels.last().isEmpty() && !isSameName(labels.last(), names.last()))
            shown.last() += " (" + labels.last() + ')';
    }
    std::vector<int> places = placesOf(nameOrLabel, names);
    if (places.empty()) places = placesOf(nameOrLabel, labels);
    if (places.size() == 1) return places.front();

    const QString key = KernelStore::instance().filterKey(typeId);
    const QString where = key + QStringLiteral(": ");
    if (places.size() > 1) refuseAmbiguous(where, nameOrLabel, places, names);
    for (int index = 0; index < descr.paramCount(); ++index) {
        const ParameterFacts& page = facts(typeId, index);
        if (!isSameName(page.lowEnd, nameOrLabel) && !isSameName(page.highEnd, nameOrLabel))
            continue;
        throw FilterError(
            QStringLiteral("%1\"%2\" is one end of \"%3\"; write %3=VALUE, valid: %4 to %5 "
                           "(fxrender list \"%6\" says which way)")
                .arg(where, nameOrLabel, names[index])
                .arg(page.range->lowest)
                .arg(page.range->highest)
                .arg(key));
    }
    throw FilterError(
        QStringLiteral("%1there is no parameter \"%2\"%3")
            .arg(where, nameOrLabel, choiceHint(nameOrLabel, names + labels, shown.join(", "))));
}

const ParameterFacts& FilterCatalog::facts(int typeId, int paramIndex) const {
    return pageFacts(typeId).at(static_cast<std::size_t>(paramIndex));
}

std::optional<ParameterRange> FilterCatalog::range(int typeId, int paramIndex) const {
    if (isSwitch(descriptor(typeId), paramIndex)) return ParameterRange{0, 1};
    return facts(typeId, paramIndex).range;
}

bool FilterCatalog::isSwitch(const HkKernelObjectDataDescr& descr, int paramIndex) {
    return paramIndex == 0 && descr.param(0).name == QLatin1String("Enabled") &&
           descr.param(0).type == QMetaType::Int;
}

QString FilterCatalog::choicesText(const std::vector<ParameterChoice>& choices) {
    QStringList texts;
    for (const ParameterChoice& choice : choices)
        texts.append(QStringLiteral("%1 (%2)").arg(choice.value).arg(choice.text));
    return texts.join(QStringLiteral(", "));
}

}  // namespace document
