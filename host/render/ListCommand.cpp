#include "host/render/ListCommand.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <vector>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/kernel/KernelStore.h"

namespace render {

namespace {

using Json = nlohmann::ordered_json;
using Row = std::array<std::string, 5>;

const char* typeName(QMetaType::Type type) {
    switch (type) {
        case QMetaType::Bool:
            return "bool";
        case QMetaType::Int:
            return "int";
        case QMetaType::Double:
            return "double";
        default:
            return "string";
    }
}

const char* kindName(ParamDescr::KeyframeType kind) {
    switch (kind) {
        case ParamDescr::Interpolated:
            return "interpolated";
        case ParamDescr::Stepped:
            return "stepped";
        case ParamDescr::Constant:
            break;
    }
    return "constant";
}

std::string rangeText(const std::optional<document::ParameterRange>& range) {
    if (!range) return "";
    return QStringLiteral("%1 to %2").arg(range->lowest).arg(range->highest).toStdString();
}

Json jsonValue(const QVariant& value, QMetaType::Type type) {
    switch (type) {
        case QMetaType::Bool:
            return value.toBool();
        case QMetaType::Int:
            return value.toInt();
        case QMetaType::Double:
            return value.toDouble();
        default:
            return value.toString().toStdString();
    }
}

std::vector<Row> parameterRows(const document::FilterCatalog& catalog, int typeId) {
    const HkKernelObjectDataDescr& descr = catalog.descriptor(typeId);
    std::vector<Row> rows;
    for (int index = 0; index < descr.paramCount(); ++index) {
        const ParamDescr& param = descr.param(index);
        rows.push_back({param.name.toStdString(), typeName(param.type), kindName(param.kind),
                        jsonValue(param.defaultValue, param.type).dump(),
                        param.type == QMetaType::Bool ? "false, true"
                                                      : rangeText(catalog.range(typeId, index))});
    }
    return rows;
}

/// Columns two spaces apart, indented, nothing at the ends of lines.
std::string aligned(const Row& row, const std::array<std::size_t, 5>& widths) {
    std::string line = "  ";
    for (std::size_t column = 0; column < row.size(); ++column) {
        line += row[column];
        line.append(widths[column] - row[column].size() + 2, ' ');
    }
    return line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
}

Json parameterJson(const document::FilterCatalog& catalog, int typeId, int index) {
    const ParamDescr& param = catalog.descriptor(typeId).param(index);
    Json json = {{"name", param.name.toStdString()},
                 {"type", typeName(param.type)},
                 {"kind", kindName(param.kind)},
                 {"default", jsonValue(param.defaultValue, param.type)}};
    if (const auto range = catalog.range(typeId, index)) {
        json["min"] = jsonValue(range->lowest, param.type);
        json["max"] = jsonValue(range->highest, param.type);
    }
    return json;
}

}  // namespace

std::string filterTable(const document::FilterCatalog& catalog) {
    const Row heading = {"Parameter", "Type", "Kind", "Default", "Range"};
    std::vector<std::pair<int, std::vector<Row>>> filters;
    std::array<std::size_t, 5> widths{};
    const auto widen = [&widths](const Row& row) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    };
    widen(heading);
    for (int typeId : KernelStore::instance().types()) {
        filters.emplace_back(typeId, parameterRows(catalog, typeId));
        for (const Row& row : filters.back().second) widen(row);
    }

    std::string table;
    for (const auto& [typeId, rows] : filters) {
        HkFilterManipulator* manipulator = KernelStore::instance().manipulator(typeId);
        if (!table.empty()) table += '\n';
        table += KernelStore::instance().filterKey(typeId).toStdString() + "  (" +
                 manipulator->filterDescription().toStdString() + ")\n";
        table += aligned(heading, widths);
        for (const Row& row : rows) table += aligned(row, widths);
    }
    return table;
}

std::string filterJson(const document::FilterCatalog& catalog) {
    Json filters = Json::array();
    for (int typeId : KernelStore::instance().types()) {
        HkFilterManipulator* manipulator = KernelStore::instance().manipulator(typeId);
        Json parameters = Json::array();
        for (int index = 0; index < catalog.descriptor(typeId).paramCount(); ++index)
            parameters.push_back(parameterJson(catalog, typeId, index));
        filters.push_back({{"key", KernelStore::instance().filterKey(typeId).toStdString()},
                           {"title", manipulator->filterTitle().toStdString()},
                           {"description", manipulator->filterDescription().toStdString()},
                           {"typeId", typeId},
                           {"parameters", parameters}});
    }
    return Json{{"filters", filters}}.dump(2) + '\n';
}

}  // namespace render
