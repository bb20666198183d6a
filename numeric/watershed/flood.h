#pragma once

#include <cstdint>

#include "numeric/base/views.h"
#include "numeric/watershed/flood_rows.h"

namespace numeric {

/// What a flood reads and writes: the relief, and the marker with its seeds, 0 elsewhere.
struct FloodPlanes {
    PlaneView<const unsigned char> relief;
    PlaneView<unsigned char> marker;

    int width() const { return marker.width; }
    int height() const { return marker.height; }
    std::int64_t pixels() const { return std::int64_t{marker.width} * marker.height; }
};

/// The floods for any relief. The scratch has watershedScratchSize() bytes at any address.
///
/// Order inside a level: the number of steps to 8 or 4 neighbours.
void floodBySteps(const FloodPlanes& planes, const FloodRows& rows, bool sidesOnly,
                  unsigned char* scratch);
/// Order inside a level: the Euclidean distance of arrival.h.
void floodByMarching(const FloodPlanes& planes, const FloodRows& rows, unsigned char* scratch);

}  // namespace numeric
