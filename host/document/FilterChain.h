#pragma once

#include <QStringList>

#include "host/document/FilterCatalog.h"
#include "host/kernel/InstanceState.h"

namespace document {

/// A filter of a chain, not yet an instance in the store.
struct FilterSetup {
    int typeId = 0;
    InstanceState state;
};

/// The filters written as FilterText.h says. Throws FilterError when one of them cannot be.
std::vector<FilterSetup> readFilterTexts(const QStringList& filterTexts,
                                         const FilterCatalog& catalog);

/// The filters that the kernel store holds, each as readFilterTexts() reads it. GUI thread.
QStringList currentFilterTexts(const FilterCatalog& catalog);

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
