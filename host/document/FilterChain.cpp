#include "host/document/FilterChain.h"

#include <utility>
#include <vector>

#include "host/document/FilterError.h"
#include "host/document/FilterSettings.h"
#include "host/kernel/KernelStore.h"

namespace document {

void setFilterChain(const QStringList& filterTexts, const FilterCatalog& catalog) {
    std::vector<std::pair<int, InstanceState>> chain;
    for (const QString& text : filterTexts) {
        const FilterText filter = parseFilterText(text);
        const int typeId = catalog.typeOf(filter.key);
        chain.emplace_back(typeId, settingsFromText(filter, catalog));
    }
    KernelStore& store = KernelStore::instance();
    store.clear();
    for (const auto& [typeId, state] : chain) store.add(typeId, state);
}

}  // namespace document
