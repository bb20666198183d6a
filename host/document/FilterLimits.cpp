#include "host/document/FilterLimits.h"

#include <algorithm>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "host/kernel/KernelStore.h"

namespace document {

FilterLimits::FilterLimits(int typeId) : m_key(KernelStore::instance().filterKey(typeId)) {
    const HkKernelObjectDataDescr& descr =
        *HkFXKernelData::getInstance()->getDataDescriptor(typeId);
    const std::vector<ParameterFacts>& facts = pageFacts(typeId);
    for (int index = 0; index < descr.paramCount(); ++index) {
        const std::optional<ParameterRange> page = facts[static_cast<std::size_t>(index)].range;
        if (!page) continue;
        const ParamDescr& param = descr.param(index);
        const double start = param.defaultValue.toDouble();
        m_bounds.push_back({index,
                            param.name,
                            *page,
                            {std::min(page->lowest, start), std::max(page->highest, start)}});
    }
}

std::optional<std::string> FilterLimits::refusal(const FilterValues& values, int width,
                                                 int height) const {
    if (!values.isEnabled()) return std::nullopt;
    for (const Bound& bound : m_bounds) {
        const double value = values.number(bound.index);
        if (value >= bound.allowed.lowest && value <= bound.allowed.highest) continue;
        return QStringLiteral("%1=%2 is out of range; use %3 to %4")
            .arg(bound.name)
            .arg(value, 0, 'g', 12)
            .arg(bound.page.lowest)
            .arg(bound.page.highest)
            .toStdString();
    }
    return refusalOfSize(m_key, values, width, height);
}

}  // namespace document
