#include "framework/ParameterTable.h"

namespace {

const ParameterRow* find(const std::vector<ParameterRow>& rows, int index) {
    for (const ParameterRow& row : rows)
        if (row.index == index) return &row;
    return nullptr;
}

}  // namespace

ParameterTable::ParameterTable(std::initializer_list<ParameterRow> rowsAfterEnabled) {
    m_rows.push_back(
        {EnabledParameter, "Enabled", QMetaType::Int, ParamDescr::Constant, QVariant(1)});
    m_rows.insert(m_rows.end(), rowsAfterEnabled.begin(), rowsAfterEnabled.end());
    for (int index = 0; index < count(); ++index)
        if (!find(m_rows, index)) qFatal("a table of parameters has no row for index %d", index);
}

const ParameterRow& ParameterTable::row(int index) const {
    const ParameterRow* row = find(m_rows, index);
    if (!row) qFatal("a table of parameters has no row for index %d", index);
    return *row;
}
