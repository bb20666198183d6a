#include "host/render/ListCommand.h"

#include <QStringList>
#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/FilterAdvice.h"
#include "host/kernel/KernelStore.h"

namespace render {

namespace {

using Json = nlohmann::ordered_json;
using Row = std::vector<std::string>;

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

/// One parameter of one filter, with what is known about it.
struct Parameter {
    Parameter(const document::FilterCatalog& catalog, int typeId, int index)
        : descr(catalog.descriptor(typeId).param(index)),
          isSwitch(document::FilterCatalog::isSwitch(catalog.descriptor(typeId), index)),
          range(catalog.range(typeId, index)),
          facts(catalog.facts(typeId, index)),
          remark(document::remarkOn(KernelStore::instance().filterKey(typeId), descr.name)) {}

    std::string label() const {
        if (facts.highEnd.isEmpty()) return facts.label.toStdString();
        return (facts.lowEnd + " to " + facts.highEnd).toStdString();
    }

    /// "1 R, 2 G", "-13 (Open) to 13 (Close)".
    std::string values() const {
        if (isSwitch || descr.type == QMetaType::Bool) return "false, true";
        QStringList texts;
        for (const document::ParameterChoice& choice : facts.choices)
            texts.append(QStringLiteral("%1 %2").arg(choice.value).arg(choice.text));
        if (!texts.isEmpty()) return texts.join(QStringLiteral(", ")).toStdString();
        if (!range) return "";
        const auto end = [this](double value, const QString& text) {
            const QString number = QString::number(value);
            return text.isEmpty() || !remark.isEmpty() ? number : number + " (" + text + ')';
        };
        return (end(range->lowest, facts.lowEnd) + " to " + end(range->highest, facts.highEnd))
            .toStdString();
    }

    std::string defaultText() const {
        if (isSwitch) return descr.defaultValue.toBool() ? "true" : "false";
        const std::string value = jsonValue(descr.defaultValue, descr.type).dump();
        for (const document::ParameterChoice& choice : facts.choices)
            if (choice.value == descr.defaultValue.toInt())
                return value + " " + choice.text.toStdString();
        return value;
    }

    const ParamDescr& descr;
    const bool isSwitch;
    const std::optional<document::ParameterRange> range;
    const document::ParameterFacts& facts;
    const QString remark;
};

std::vector<Parameter> parametersOf(const document::FilterCatalog& catalog, int typeId) {
    std::vector<Parameter> parameters;
    const int count = catalog.descriptor(typeId).paramCount();
    parameters.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) parameters.emplace_back(catalog, typeId, index);
    return parameters;
}

/// What the page says in so many words: the longer text, or else the shorter one.
template <typename Facts>
std::string pageTextOf(const Facts& facts) {
    return (facts.whatsThis.isEmpty() ? facts.toolTip : facts.whatsThis).toStdString();
}

/// What a parameter is about, in sentences.
std::vector<std::string> meaningOf(const Parameter& parameter) {
    if (parameter.isSwitch) return {"Switches the filter on or off."};
    std::vector<std::string> sentences = {pageTextOf(parameter.facts),
                                          parameter.remark.toStdString()};
    sentences.erase(std::remove(sentences.begin(), sentences.end(), ""), sentences.end());
    return sentences;
}

std::string headingOf(int typeId) {
    HkFilterManipulator* manipulator = KernelStore::instance().manipulator(typeId);
    return KernelStore::instance().filterKey(typeId).toStdString() + "  (" +
           manipulator->filterTitle().toStdString() + ": " +
           manipulator->filterDescription().toStdString() + ")\n";
}

/// Columns two spaces apart, indented, nothing at the ends of lines.
std::string aligned(const Row& row, const std::vector<std::size_t>& widths) {
    std::string line = "  ";
    for (std::size_t column = 0; column < row.size(); ++column) {
        line += row[column];
        line.append(widths[column] - row[column].size() + 2, ' ');
    }
    return line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
}

std::string markdownRow(const Row& cells) {
    std::string line = "|";
    for (const std::string& cell : cells) line += cell.empty() ? " |" : ' ' + cell + " |";
    return line + '\n';
}

void addTexts(Json& json, const std::vector<std::pair<const char*, QString>>& texts) {
    for (const auto& [name, text] : texts)
        if (!text.isEmpty()) json[name] = text.toStdString();
}

Json parameterJson(const Parameter& parameter) {
    const ParamDescr& descr = parameter.descr;
    const document::ParameterFacts& facts = parameter.facts;
    Json json = {{"name", descr.name.toStdString()},
                 {"type", typeName(descr.type)},
                 {"kind", kindName(descr.kind)},
                 {"default", jsonValue(descr.defaultValue, descr.type)}};
    if (parameter.range) {
        json["min"] = jsonValue(parameter.range->lowest, descr.type);
        json["max"] = jsonValue(parameter.range->highest, descr.type);
    }
    addTexts(json, {{"label", facts.label},
                    {"lowEnd", facts.lowEnd},
                    {"highEnd", facts.highEnd},
                    {"toolTip", facts.toolTip},
                    {"whatsThis", facts.whatsThis},
                    {"remark", parameter.remark}});
    for (const document::ParameterChoice& choice : facts.choices) {
        Json entry = {{"value", choice.value}, {"text", choice.text.toStdString()}};
        addTexts(entry, {{"toolTip", choice.toolTip}, {"whatsThis", choice.whatsThis}});
        json["choices"].push_back(entry);
    }
    return json;
}

}  // namespace

std::string filterTables(const document::FilterCatalog& catalog) {
    const Row heading = {"Parameter", "Label", "Type", "Kind", "Default", "Values"};
    std::vector<std::pair<int, std::vector<Row>>> filters;
    std::vector<std::size_t> widths(heading.size());
    for (int typeId : KernelStore::instance().types()) {
        std::vector<Row> rows = {heading};
        for (const Parameter& p : parametersOf(catalog, typeId))
            rows.push_back({p.descr.name.toStdString(), p.label(), typeName(p.descr.type),
                            kindName(p.descr.kind), p.defaultText(), p.values()});
        for (const Row& row : rows)
            for (std::size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], row[i].size());
        filters.emplace_back(typeId, rows);
    }
    std::string tables;
    for (const auto& [typeId, rows] : filters) {
        tables += headingOf(typeId);
        for (const Row& row : rows) tables += aligned(row, widths);
        tables += '\n';
    }
    return tables + "fxrender list KEY says what the parameters of a filter mean.\n";
}

std::string filterExplanation(const document::FilterCatalog& catalog, int typeId) {
    std::string text = headingOf(typeId);
    for (const Parameter& p : parametersOf(catalog, typeId)) {
        text += "\n  " + p.descr.name.toStdString();
        if (!p.label().empty() && p.label() != p.descr.name.toStdString())
            text += "  \"" + p.label() + '"';
        text += '\n';
        for (const std::string& sentence : meaningOf(p)) text += "      " + sentence + '\n';
        text += std::string("      ") + typeName(p.descr.type) + ", " + kindName(p.descr.kind);
        if (p.facts.choices.empty() && !p.values().empty()) text += ", " + p.values();
        text += "; default " + p.defaultText() + '\n';
        std::vector<std::size_t> widths(3);
        std::vector<Row> choices;
        for (const document::ParameterChoice& choice : p.facts.choices) {
            choices.push_back(
                {std::to_string(choice.value), choice.text.toStdString(), pageTextOf(choice)});
            for (std::size_t i = 0; i < widths.size(); ++i)
                widths[i] = std::max(widths[i], choices.back()[i].size());
        }
        for (const Row& choice : choices) text += "      " + aligned(choice, widths);
    }
    return text;
}

std::string filterMarkdown(const document::FilterCatalog& catalog, int typeId) {
    HkFilterManipulator* manipulator = KernelStore::instance().manipulator(typeId);
    std::string text = "Key `" + KernelStore::instance().filterKey(typeId).toStdString() +
                       "`, title \"" + manipulator->filterTitle().toStdString() + "\", type " +
                       std::to_string(typeId) + ".\n\n";
    text += markdownRow({"Parameter", "on the page", "meaning", "values", "default", "kind"});
    text += "|---|---|---|---|---|---|\n";
    for (const Parameter& p : parametersOf(catalog, typeId)) {
        std::vector<std::string> lines = meaningOf(p);
        for (const document::ParameterChoice& choice : p.facts.choices)
            if (!pageTextOf(choice).empty())
                lines.push_back(choice.text.toStdString() + ": " + pageTextOf(choice));
        std::string meaning;
        for (const std::string& line : lines) meaning += (meaning.empty() ? "" : "<br>") + line;
        text += markdownRow({'`' + p.descr.name.toStdString() + '`', p.label(), meaning, p.values(),
                             p.defaultText(), kindName(p.descr.kind)});
    }
    return text;
}

std::string filterJson(const document::FilterCatalog& catalog, const std::vector<int>& typeIds) {
    Json filters = Json::array();
    for (int typeId : typeIds) {
        HkFilterManipulator* manipulator = KernelStore::instance().manipulator(typeId);
        Json parameters = Json::array();
        for (const Parameter& parameter : parametersOf(catalog, typeId))
            parameters.push_back(parameterJson(parameter));
        filters.push_back({{"key", KernelStore::instance().filterKey(typeId).toStdString()},
                           {"title", manipulator->filterTitle().toStdString()},
                           {"description", manipulator->filterDescription().toStdString()},
                           {"typeId", typeId},
                           {"parameters", parameters}});
    }
    return Json{{"filters", filters}}.dump(2) + '\n';
}

}  // namespace render
