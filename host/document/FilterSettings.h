#pragma once

#include "host/document/FilterCatalog.h"
#include "host/document/FilterText.h"
#include "host/kernel/InstanceState.h"

namespace document {

/// The state of an instance set up as the text says: the filter's defaults with the values and keys
/// of the text. An instance with keys is animated.
///
/// A value must be of the parameter's type (whole number, number, true or false, where 1 and 0 mean
/// true and false) and in its range; the default is valid even where it is outside. The texts of a
/// row of choices are values, too. A parameter of kind Stepped holds every key; one of kind
/// Constant takes no keys.
/// Throws FilterError naming the filter, the parameter, the value and what is valid, or that the
/// parameter is given twice.
InstanceState settingsFromText(const FilterText& text, const FilterCatalog& catalog);

/// Gives the parameters that the text names the values or keys it says, in the place of those the
/// state has, and leaves the others alone. Throws as settingsFromText().
void applySettings(const FilterText& text, int typeId, const FilterCatalog& catalog,
                   InstanceState& state);

}  // namespace document
