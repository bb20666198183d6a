#pragma once

#include <QString>
#include <vector>

#include "host/document/FilterCatalog.h"

namespace document {

/// How a text that somebody is typing may go on.
struct Completion {
    QString text;   ///< all of it: it begins with what was typed, in any case
    QString about;  ///< a few words, or empty
    bool isWhole;   ///< false when more is likely to follow
};

/// What is being typed: a filter as FilterText.h has it, or one with values to try (see
/// ParameterSweep.h), where commas part values of one parameter.
enum class FilterNotation { Settings, Sweep };

/// Keys, the names of parameters that are not given yet, and values: the choices, true and false,
/// all numbers of a short range, the ends of a long one and the default. Empty where nothing is
/// known. GUI thread.
std::vector<Completion> completionsOf(const QString& typed, FilterNotation notation,
                                      const FilterCatalog& catalog);

}  // namespace document
