#pragma once

#include <QStringList>
#include <map>
#include <optional>
#include <vector>

#include "framework/contract/FxKernelApi/HkKernelObjectDataDescr.h"
#include "host/document/PageRange.h"

class QUndoStack;

namespace document {

/// The filters that are registered in the kernel store, with what can be known about their
/// parameters. GUI thread.
class FilterCatalog {
public:
    /// undoStack: that of the manipulators, which must not hold anything yet. It stays empty.
    explicit FilterCatalog(QUndoStack& undoStack) : m_undoStack(undoStack) {}

    QStringList keys() const;  ///< in the order of registration

    /// The type id of a filter. Throws FilterError naming the nearest key when there is none.
    int typeOf(const QString& key) const;

    const HkKernelObjectDataDescr& descriptor(int typeId) const;
    QStringList parameterNames(int typeId) const;

    /// The index of a parameter. Throws FilterError naming the nearest name when there is none.
    int parameterIndex(int typeId, const QString& name) const;

    /// The values a user may give a number; none when there are no bounds.
    std::optional<ParameterRange> range(int typeId, int paramIndex) const;

    /// Every filter's first parameter switches it on and off; it is declared a number, but means
    /// true or false.
    static bool isSwitch(const HkKernelObjectDataDescr& descr, int paramIndex);

private:
    QUndoStack& m_undoStack;
    /// By type; found when first asked for.
    mutable std::map<int, std::vector<std::optional<ParameterRange>>> m_ranges;
};

}  // namespace document
