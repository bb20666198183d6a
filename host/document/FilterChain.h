#pragma once

#include <QStringList>

#include "host/document/FilterCatalog.h"

namespace document {

/// Makes the kernel store hold exactly these filters, in this order, each written as FilterText.h
/// says. Throws FilterError, and leaves the store as it was, when one of them cannot be. GUI
/// thread.
void setFilterChain(const QStringList& filterTexts, const FilterCatalog& catalog);

}  // namespace document
