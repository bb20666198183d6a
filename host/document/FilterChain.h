#pragma once

#include <QStringList>

#include "host/document/FilterCatalog.h"

namespace document {

/// Makes the kernel store hold exactly these filters, in this order, each written as FilterText.h
/// says. Throws FilterError, and leaves the store as it was, when one of them cannot be. GUI
/// thread.
void setFilterChain(const QStringList& filterTexts, const FilterCatalog& catalog);

/// Changes values of one filter of the chain: "KEY:Name=VALUE,...", and "KEY#2:..." for the second
/// one of that key. What is named gets the value or keys of the text in the place of its own.
/// Throws FilterError, and leaves the store as it was, when the chain has no such filter, has
/// several and the text does not say which, or the values cannot be. GUI thread.
void overrideFilter(const QString& text, const FilterCatalog& catalog);

}  // namespace document
