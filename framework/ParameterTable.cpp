#include "framework/ParameterTable.h"

ParameterTable::ParameterTable(std::initializer_list<ParameterRow> rowsAfterEnabled,
                               std::initializer_list<int> defaultsOrder)
    : m_defaultsOrder(defaultsOrder) {
    m_rows.push_back({"Enabled", QMetaType::Int, ParamDescr::Constant, QVariant(1)});
    m_rows.insert(m_rows.end(), rowsAfterEnabled.begin(), rowsAfterEnabled.end());
    if (m_defaultsOrder.empty())
        for (int index = 0; index < count(); ++index) m_defaultsOrder.push_back(index);
}
