#include "host/document/FilterChain.h"

#include <algorithm>
#include <vector>

#include "host/document/FilterError.h"
#include "host/document/FilterSettings.h"
#include "host/kernel/KernelStore.h"

namespace document {

std::vector<FilterSetup> readFilterTexts(const QStringList& filterTexts,
                                         const FilterCatalog& catalog) {
    std::vector<FilterSetup> chain;
    for (const QString& text : filterTexts) {
        const FilterText filter = parseFilterText(text);
        const int typeId = catalog.typeOf(filter.key);
        chain.push_back({typeId, settingsFromText(filter, catalog)});
    }
    return chain;
}

QStringList currentFilterTexts(const FilterCatalog& catalog) {
    const KernelStore& store = KernelStore::instance();
    QStringList texts;
    for (const InstanceId& instance : store.instances())
        texts << textFromSettings(instance.typeId, *store.state(instance.objectId), catalog);
    return texts;
}

void setFilterChain(const QStringList& filterTexts, const FilterCatalog& catalog) {
    const std::vector<FilterSetup> chain = readFilterTexts(filterTexts, catalog);
    KernelStore& store = KernelStore::instance();
    store.clear();
    for (const FilterSetup& filter : chain) store.add(filter.typeId, filter.state);
}

void overrideFilter(const QString& text, const FilterCatalog& catalog) {
    FilterText filter = parseFilterText(text);
    if (filter.parameters.isEmpty())
        throw FilterError(
            QStringLiteral("\"%1\" sets nothing; write KEY:Name=VALUE").arg(filter.key));
    int number = 0;  // 0: not said
    const auto hash = filter.key.lastIndexOf('#');
    if (hash >= 0) {
        bool isNumber = false;
        number = filter.key.mid(hash + 1).toInt(&isNumber);
        if (!isNumber || number < 1)
            throw FilterError(QStringLiteral("\"%1\": after # comes which one of the filters of "
                                             "that key is meant, from 1")
                                  .arg(filter.key));
        filter.key = filter.key.left(hash).trimmed();
    }
    const int typeId = catalog.typeOf(filter.key);
    KernelStore& store = KernelStore::instance();
    const QString key = store.filterKey(typeId);
    std::vector<int> objectIds;
    for (const InstanceId& instance : store.instances())
        if (instance.typeId == typeId) objectIds.push_back(instance.objectId);
    const int count = static_cast<int>(objectIds.size());
    if (count == 0) throw FilterError(QStringLiteral("the chain has no \"%1\"").arg(key));
    if (number == 0 && count > 1)
        throw FilterError(QStringLiteral("the chain has %1 filters \"%2\"; write \"%2#1:...\" "
                                         "for the first of them")
                              .arg(count)
                              .arg(key));
    if (number > count)
        throw FilterError(QStringLiteral("the chain has no %1 filters \"%2\"; the last one is "
                                         "\"%2#%3\"")
                              .arg(number)
                              .arg(key)
                              .arg(count));
    const int objectId = objectIds[static_cast<std::size_t>(std::max(number, 1) - 1)];
    InstanceState state = *store.state(objectId);
    applySettings(filter, typeId, catalog, state);
    store.setState(objectId, state);
}

}  // namespace document
