#pragma once

#include "numeric/watershed/flood.h"

namespace numeric {

/// The flood by steps in sweeps over rows, for any relief. Returns false, with the marker as it
/// was, for planes whose ways are too winding for sweeps, or that are too small for the scratch.
///
/// Level and steps of a pixel are the least fixed point of a local rule, which sweeps find in any
/// order of rows (cf. Vincent 1993, who does so for levels alone). The label is no part of it: a
/// way of less steps may bring a greater one. It follows from the final keys.
bool floodByStepSweeps(const FloodPlanes& planes, bool sidesOnly, unsigned char* scratch,
                       int scratchSize);

}  // namespace numeric
