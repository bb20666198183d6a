#pragma once

#include <string>

#include "host/document/FilterCatalog.h"

namespace render {

/// The filters and their parameters as a table to read.
std::string filterTable(const document::FilterCatalog& catalog);

/// The same for programs:
/// {"filters": [{"key", "title", "description", "typeId", "parameters": [{"name",
///   "type": "bool" | "int" | "double" | "string",
///   "kind": "interpolated" | "stepped" | "constant", "default", "min", "max"}]}]}
/// min and max are absent where a parameter has no bounds.
std::string filterJson(const document::FilterCatalog& catalog);

}  // namespace render
