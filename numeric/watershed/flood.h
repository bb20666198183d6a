#pragma once

#include <cstdint>

#include "numeric/base/neighbours.h"
#include "numeric/base/views.h"
#include "numeric/watershed/front_rows.h"
#include "numeric/watershed/tile_rows.h"
#include "numeric/watershed/watershed_rows.h"

namespace numeric {

/// What a flood reads and writes: the relief, and the marker with its seeds, 0 elsewhere.
struct FloodPlanes {
    PlaneView<const unsigned char> relief;
    PlaneView<unsigned char> marker;

    int width() const { return marker.width; }
    int height() const { return marker.height; }
    std::int64_t pixels() const { return std::int64_t{marker.width} * marker.height; }
};

/// The flood in tiles, for planes of two levels: all free pixels are of one level, and all seeds
/// above it have one label. False, with the marker as it was but for areas that are done, where the
/// planes are not of that kind, the free areas thin lines or long corridors, the paths too long,
/// the scratch too small, or where the work turns out to be more than that of the queue.
bool floodByTiles(const FloodPlanes& planes, const WatershedRows& rows, const TileRows& tileRows,
                  unsigned char* scratch, int scratchSize);

// The floods by a queue, for any relief. The scratch has watershedScratchSize() bytes at any
// address.

/// Order inside a level: the number of steps.
void floodBySteps(const FloodPlanes& planes, const WatershedRows& rows, Neighbours neighbours,
                  unsigned char* scratch);
/// Order inside a level: the Euclidean distance of arrival.h.
void floodByMarching(const FloodPlanes& planes, const WatershedRows& rows,
                     const FrontRows& frontRows, unsigned char* scratch);

}  // namespace numeric
