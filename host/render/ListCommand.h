#pragma once

#include <string>
#include <vector>

#include "host/document/FilterCatalog.h"

namespace render {

/// The filters and their parameters as tables to read.
std::string filterTables(const document::FilterCatalog& catalog);

/// Everything about one filter, to read.
std::string filterExplanation(const document::FilterCatalog& catalog, int typeId);

/// The part of a filter's page in docs/filters that follows from the filter itself: the table of
/// its parameters, as Markdown.
std::string filterMarkdown(const document::FilterCatalog& catalog, int typeId);

/// The filters of these types, for programs:
/// {"filters": [{"key", "title", "description", "typeId", "parameters": [{"name",
///   "type": "bool" | "int" | "double" | "string",
///   "kind": "interpolated" | "stepped" | "constant", "default", "min", "max",
///   "label", "lowEnd", "highEnd", "toolTip", "whatsThis", "remark",
///   "choices": [{"value", "text", "toolTip", "whatsThis"}]}]}]}
/// From min on, what the filter's page does not tell is absent.
std::string filterJson(const document::FilterCatalog& catalog, const std::vector<int>& typeIds);

}  // namespace render
