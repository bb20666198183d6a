#include "host/document/FilterChain.h"

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

}  // namespace document
