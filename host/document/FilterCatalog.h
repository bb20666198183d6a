#pragma once

#include <QStringList>
#include <optional>
#include <vector>

#include "framework/contract/FxKernelApi/HkKernelObjectDataDescr.h"
#include "host/document/PageFacts.h"

namespace document {

/// The filters that are registered in the kernel store, with what can be known about their
/// parameters. GUI thread.
///
/// Filters are found by key or title, parameters by name or by the label on the page; upper and
/// lower case are alike where that leaves one.
class FilterCatalog {
public:
    QStringList keys() const;  ///< in the order of registration

    /// The type id of a filter. Throws FilterError naming the nearest key or title when there is
    /// none, and the keys when there are several.
    int typeOf(const QString& keyOrTitle) const;

    const HkKernelObjectDataDescr& descriptor(int typeId) const;

    /// The index of a parameter. Throws FilterError naming the nearest name or label when there is
    /// none, the names when there are several, and the parameter's name when the text is that of
    /// one end of a slider, which is none.
    int parameterIndex(int typeId, const QString& nameOrLabel) const;

    /// What the filter's page says about a parameter.
    const ParameterFacts& facts(int typeId, int paramIndex) const;

    /// The values a user may give a number; none when there are no bounds.
    std::optional<ParameterRange> range(int typeId, int paramIndex) const;

    /// Every filter's first parameter switches it on and off; it is declared a number, but means
    /// true or false.
    static bool isSwitch(const HkKernelObjectDataDescr& descr, int paramIndex);

    /// "1 (R), 2 (G)".
    static QString choicesText(const std::vector<ParameterChoice>& choices);
};

}  // namespace document
