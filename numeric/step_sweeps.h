#pragma once

#include "numeric/flood.h"

namespace numeric {

/// The flood by steps in sweeps over rows. Returns false, with the marker as it was, for planes
/// whose ways are too long or too winding for sweeps, or that are too small for the scratch.
bool floodByStepSweeps(const FloodPlanes& planes, bool sidesOnly, unsigned char* scratch,
                       int scratchSize);

}  // namespace numeric
