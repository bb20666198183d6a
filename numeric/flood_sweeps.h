#pragma once

#include "numeric/flood.h"
#include "numeric/sweep_rows.h"

namespace numeric {

/// The flood of planes on which all free pixels are of one level and all seeds above it of one
/// label: the object separator's own case. Returns false, with the marker as it was, for any other
/// plane, for one whose ways are too winding for sweeps, and for one too small for the scratch.
bool floodBySweeps(const FloodPlanes& planes, const SweepRows& rows, const SweepOrder& order,
                   unsigned char* scratch, int scratchSize);

}  // namespace numeric
