#pragma once

#include <QString>
#include <QVariant>
#include <vector>

#include "host/document/FilterCatalog.h"
#include "host/kernel/KernelStore.h"

namespace document {

/// One parameter of one filter of the chain, and the values to try it with.
struct ParameterSweep {
    InstanceId instance;
    int parameter = -1;
    std::vector<QVariant> values;  ///< of the parameter's declared type, at least one
};

/// Reads "KEY:Name=VALUE,VALUE...": values as FilterText.h has them, without keys, and ranges of
/// numbers, "1-13:4" for 1, 5, 9, 13 and "1-4" for 1, 2, 3, 4. KEY is a filter that the kernel
/// store holds; KEY#2 is the second of its kind. At most `mostValues` values.
/// Throws FilterError naming what is wrong and what is valid. GUI thread.
ParameterSweep sweepFromText(const QString& text, const FilterCatalog& catalog, int mostValues);

/// The filter of such a text, as setFilterChain() takes it: "KEY".
QString filterOfSweep(const QString& text);

/// The parameter as the filter's page calls it: its label, or else its name.
QString parameterLabel(const FilterCatalog& catalog, int typeId, int parameter);

/// A value as it is written on the command line: the text of its button, true, 2.5.
QString valueText(const FilterCatalog& catalog, int typeId, int parameter, const QVariant& value);

}  // namespace document
