#include <algorithm>
#include <climits>
#include <cstring>

#include "numeric/checks.h"
#include "numeric/flood.h"
#include "numeric/views.h"
#include "numeric/watershed_rows.h"

namespace numeric {
namespace {

const SlotTable<WatershedRows> kWatershed(kWatershedBuilds);

enum Norm { Chessboard, CityBlock, Euclidean, FastMarching, NormCount };
enum Flag { BySteps = 1, ByDistance = 2, BordersOver4 = 64, BordersOver8 = 128 };

constexpr int kAreaAlignment = 32;

bool validFlags(int flags) {
    const bool oneOrder = ((flags & BySteps) != 0) != ((flags & ByDistance) != 0);
    const bool bothBorders = (flags & BordersOver4) != 0 && (flags & BordersOver8) != 0;
    return oneOrder && !bothBorders &&
           (flags & ~(BySteps | ByDistance | BordersOver4 | BordersOver8)) == 0;
}

/// 99 / 70 is the square root of 2 to four decimals.
FloodOrder orderOf(int norm, int flags) {
    if (norm == CityBlock) return {1, 0, false};
    if (norm == Chessboard || (flags & BySteps) != 0) return {1, 1, false};
    return {70, 99, norm == FastMarching};
}

/// Rows of a plane one after another, each with one more pixel at either end.
class PaddedRows {
public:
    PaddedRows(unsigned char* buffer, PlaneView<const unsigned char> plane, unsigned char outside)
        : m_plane(plane), m_outside(outside) {
        for (int i = 0; i < 3; ++i) m_rows[i] = buffer + i * (plane.width + std::int64_t{2}) + 1;
        load(m_rows[1], -1);
        load(m_rows[2], 0);
    }

    static std::int64_t bytes(int width) { return 3 * (width + std::int64_t{2}); }

    void advanceTo(int y) {
        std::rotate(m_rows, m_rows + 1, m_rows + 3);
        load(m_rows[2], y + 1);
    }
    const unsigned char* above() const { return m_rows[0]; }
    const unsigned char* row() const { return m_rows[1]; }
    const unsigned char* below() const { return m_rows[2]; }

private:
    void load(unsigned char* to, int y) {
        const auto width = static_cast<std::size_t>(m_plane.width);
        if (y < 0 || y >= m_plane.height)
            std::memset(to, m_outside, width);
        else
            std::memcpy(to, m_plane.row(y), width);
        to[-1] = to[width] = m_outside;
    }

    PlaneView<const unsigned char> m_plane;
    unsigned char m_outside;
    unsigned char* m_rows[3];
};

/// Calls visit(x) for every byte of the row that is not 0.
template <class Visit>
void forEachSet(const unsigned char* row, int width, Visit visit) {
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        std::uint64_t eight;
        std::memcpy(&eight, row + x, sizeof eight);
        if (eight == 0) continue;
        for (int i = x; i < x + 8; ++i)
            if (row[i] != 0) visit(i);
    }
    for (; x < width; ++x)
        if (row[x] != 0) visit(x);
}

/// Scratch: the keys, and behind them the queues, in whose place the padded rows stand before and
/// after the flood.
struct WatershedScratch {
    std::uint32_t* keys;
    std::int32_t* queues;
    unsigned char* rows;

    WatershedScratch(unsigned char* scratch, int width, int height) {
        const auto address = reinterpret_cast<std::uintptr_t>(scratch);
        scratch += (kAreaAlignment - address % kAreaAlignment) % kAreaAlignment;
        keys = reinterpret_cast<std::uint32_t*>(scratch);
        queues = reinterpret_cast<std::int32_t*>(keys + Flood::keyCount(width, height));
        rows = reinterpret_cast<unsigned char*>(queues);
    }
};

/// Fills the keys and chains the seeds that have room. Returns how many pixels have no label.
int prepare(Flood& flood, PlaneView<const unsigned char> relief,
            PlaneView<const unsigned char> marker, unsigned char* buffer,
            const WatershedRows& rows) {
    int unlabelled = 0;
    PaddedRows labels(buffer, marker, 255);  // outside there is no room
    unsigned char* room = buffer + PaddedRows::bytes(marker.width);
    for (int y = 0; y < marker.height; ++y) {
        const unsigned char* reliefRow = relief.row(y);
        unlabelled += rows.keysOf(marker.row(y), reliefRow, flood.keyRow(y), marker.width);
        labels.advanceTo(y);
        rows.room(labels.above(), labels.row(), labels.below(), room, marker.width);
        forEachSet(room, marker.width, [&](int x) { flood.chainSeed(x, y, reliefRow[x]); });
    }
    return unlabelled;
}

void drawBorders(PlaneView<unsigned char> marker, bool eight, unsigned char* buffer,
                 const WatershedRows& rows) {
    const auto bordersRow = eight ? rows.borders8 : rows.borders4;
    PaddedRows labels(buffer, {marker.data, marker.stepBytes, marker.width, marker.height}, 0);
    for (int y = 0; y < marker.height; ++y) {
        labels.advanceTo(y);
        bordersRow(labels.above(), labels.row(), labels.below(), marker.row(y), marker.width);
    }
}

}  // namespace

KernelStatus watershedScratchSize(int width, int height, int* size) {
    if (!size) return NullPointer;
    const KernelStatus status = checkSize(width, height);
    if (status != Success) return status;

    const std::int64_t w = width, h = height;
    const std::int64_t w32 = (w + 31) / 32 * 32;
    // The products of two ints fit 64 bits with room for these small factors only while the sum
    // fits an int.
    if (w * h > INT_MAX) return BadSize;
    const std::int64_t a = (2 * h + 2) * w32 + 4 * w32 * h + h + 66;
    const std::int64_t b = 12 * w * h + 36 + (w + 2) * (h + 2);
    if (std::max(a, b) > INT_MAX) return BadSize;
    *size = static_cast<int>(std::max(a, b));
    return Success;
}

KernelStatus watershed(const unsigned char* relief, int reliefStep, unsigned char* marker,
                       int markerStep, int width, int height, int norm, int flags,
                       unsigned char* scratch) {
    if (!relief || !marker || !scratch) return NullPointer;
    const KernelStatus status =
        firstError(checkSize(width, height), checkByteSteps(width, {reliefStep, markerStep}));
    if (status != Success) return status;
    if (norm < 0 || norm >= NormCount || !validFlags(flags)) return BadArgument;
    int scratchSize = 0;
    if (watershedScratchSize(width, height, &scratchSize) != Success) return BadSize;

    const WatershedRows& rows = kWatershed.selected();
    const PlaneView<const unsigned char> reliefPlane{relief, reliefStep, width, height};
    const PlaneView<unsigned char> labels{marker, markerStep, width, height};
    const WatershedScratch work(scratch, width, height);
    Flood flood(work.keys, work.queues, width, height, orderOf(norm, flags));

    const int unlabelled =
        prepare(flood, reliefPlane, {marker, markerStep, width, height}, work.rows, rows);
    flood.run(unlabelled, {marker, markerStep, width, height});
    for (int y = 0; y < height; ++y) rows.labelsOf(flood.keyRow(y), labels.row(y), width);
    if ((flags & (BordersOver4 | BordersOver8)) != 0)
        drawBorders(labels, (flags & BordersOver8) != 0, work.rows, rows);
    return Success;
}

}  // namespace numeric
