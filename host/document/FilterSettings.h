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

/// The text from which settingsFromText() makes a state that renders alike: what differs from the
/// filter's defaults, keys where the instance is animated. What an instance holds but does not use
/// (a base value beside keys, elements kept for other versions) is not in it.
QString textFromSettings(int typeId, const InstanceState& state, const FilterCatalog& catalog);

/// Keys as FilterText.h reads them: "0=1;20|=5;40=9".
QString textFromKeys(const ParamTrack& keys);

}  // namespace document
