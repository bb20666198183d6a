#pragma once

#include "numeric/watershed/flood.h"
#include "numeric/watershed/free_rows.h"
#include "numeric/watershed/tile_rows.h"

namespace numeric {

/// The flood by the distances of arrival.h for planes in which all free pixels are of one level and
/// all seeds above it have one label. False, with the marker as it was, where the planes are not
/// of that kind, ways are too long or winding, or the scratch is too small.
bool floodByTiles(const FloodPlanes& planes, const FreeRows& freeRows, const TileRows& rows,
                  unsigned char* scratch, int scratchSize);

}  // namespace numeric
