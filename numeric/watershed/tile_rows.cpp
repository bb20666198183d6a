#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed/tile_rows.cpp"
#include <algorithm>
#include <cstring>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/base/transpose-inl.h"
#include "numeric/watershed/tile_lines-inl.h"
#include "numeric/watershed/tile_rows.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

// The keys just outside of a tile: on each side the line beside it, with the corners at either end.
struct Edges {
    TileKey above[kTileSide + 2];
    TileKey below[kTileSide + 2];
    TileKey left[kTileSide + 2];
    TileKey right[kTileSide + 2];

    explicit Edges(const TilesAround& around) {
        constexpr int kLast = kTileSide - 1;
        const Tile* corners[] = {around.aboveLeft, around.aboveRight, around.belowLeft,
                                 around.belowRight};
        above[0] = left[0] = corners[0]->right[kLast];
        above[kTileSide + 1] = right[0] = corners[1]->left[kLast];
        below[0] = left[kTileSide + 1] = corners[2]->right[0];
        below[kTileSide + 1] = right[kTileSide + 1] = corners[3]->left[0];
        storeLine(loadLine(around.above->keys + kTileSide * kLast), above + 1);
        storeLine(loadLine(around.below->keys), below + 1);
        storeLine(loadLine(around.left->right), left + 1);
        storeLine(loadLine(around.right->left), right + 1);
    }
};

// Lines of keys one after another, with what lies around them.
struct Lines {
    TileKey* keys;
    const TileKey* before;  // the edges, from their first corner
    const TileKey* past;
    const TileKey* starts;
    const TileKey* ends;

    HWY_INLINE TileKey* line(int i) const { return keys + kTileSide * i; }
    // Also the line before the first and the one past the last.
    HWY_INLINE Line load(int i) const {
        if (i < 0) return loadLine(before + 1);
        return loadLine(i < kTileSide ? line(i) : past + 1);
    }
    // The smaller of the corners that line i is to its neighbours.
    HWY_INLINE Line corners(const Line& loaded, int i) const {
        return smallerBeside(loaded, starts[i + 1], ends[i + 1]);
    }
};

// From the first line on to the last and back, both at once: they do not wait for each other.
// *changes is not zero where keys have changed.
template <class Order>
HWY_INLINE void relaxLines(const Lines& lines, int first, int last, Line* changes) {
    Line fromBefore = lines.load(first - 1);
    Line fromPast = lines.load(last + 1);
    for (int i = first, j = last; i <= last; ++i, --j) {
        const Line forward = lines.load(i);
        fromBefore = lowered<Order>(forward, fromBefore, lines.corners(fromBefore, i - 1));
        storeLine(fromBefore, lines.line(i));
        markChanges(forward, fromBefore, changes);
        const Line backward = lines.load(j);
        fromPast = lowered<Order>(backward, fromPast, lines.corners(fromPast, j + 1));
        storeLine(fromPast, lines.line(j));
        markChanges(backward, fromPast, changes);
    }
}

// Rows to columns.
HWY_INLINE void turnOver(const TileKey* keys, TileKey* turned) {
    const Lanes d;
    for (int y = 0; y < kTileSide; y += kLanes)
        for (int x = 0; x < kTileSide; x += kLanes) {
            Vec square[kLanes];
            HWY_UNROLL(kLanes)
            for (int i = 0; i < kLanes; ++i)
                square[i] = hn::BitCast(d, hn::LoadU(KeyTag(), keys + (y + i) * kTileSide + x));
            transposeSquare(square);
            HWY_UNROLL(kLanes)
            for (int i = 0; i < kLanes; ++i)
                hn::StoreU(hn::BitCast(KeyTag(), square[i]), KeyTag(),
                           turned + (x + i) * kTileSide + y);
        }
}

HWY_INLINE bool differs(const Line& line, const TileKey* keys) {
    Line changes = zeroLine();
    markChanges(line, loadLine(keys), &changes);
    return !isZero(changes);
}

// The outer lines as they were, to tell which have changed.
struct OuterLines {
    Line above, left, right, below;

    explicit OuterLines(const Tile& tile)
        : above(loadLine(tile.keys)),
          left(loadLine(tile.left)),
          right(loadLine(tile.right)),
          below(loadLine(tile.keys + kTileSide * (kTileSide - 1))) {}

    unsigned changedParts(const Tile& tile) const {
        unsigned parts = kInside;
        if (differs(above, tile.keys)) parts |= kAbove;
        if (differs(left, tile.left)) parts |= kLeft;
        if (differs(right, tile.right)) parts |= kRight;
        if (differs(below, tile.keys + kTileSide * (kTileSide - 1))) parts |= kBelow;
        return parts;
    }
};

void copyOuterColumns(Tile* tile) {
    for (int y = 0; y < kTileSide; ++y) {
        tile->left[y] = tile->keys[y * kTileSide];
        tile->right[y] = tile->keys[y * kTileSide + kTileSide - 1];
    }
}

// How many keys are distances.
int countReached(const Tile& tile) {
    const KeyTag d;
    auto counts = hn::Zero(d);
    for (int i = 0; i < kTileSide * kTileSide; i += kLanes) {
        const auto isReached = hn::Lt(hn::LoadU(d, tile.keys + i), hn::Set(d, kUnreachedKey));
        counts = hn::Sub(counts, hn::VecFromMask(d, isReached));
    }
    return hn::GetLane(hn::SumOfLanes(d, counts));
}

template <class Order>
Relaxed relax(Tile* tile, const TilesAround& around, const TileBounds& bounds, int rounds) {
    const Edges edges(around);
    const OuterLines before(*tile);
    alignas(64) TileKey turned[kTileSide * kTileSide];
    bool any = false;
    int round = 0;
    while (round < rounds) {
        Line changes = zeroLine();
        relaxLines<Order>({tile->keys, edges.above, edges.below, edges.left, edges.right},
                          bounds.top, bounds.bottom, &changes);
        turnOver(tile->keys, turned);
        if (round++ > 0 && isZero(changes)) break;
        relaxLines<Order>({turned, edges.left, edges.right, edges.above, edges.below}, bounds.left,
                          bounds.right, &changes);
        turnOver(turned, tile->keys);
        if (isZero(changes)) break;
        any = true;
    }
    storeLine(loadLine(turned), tile->left);
    storeLine(loadLine(turned + kTileSide * (kTileSide - 1)), tile->right);
    return {any ? before.changedParts(*tile) : 0, round, countReached(*tile)};
}

template <class Order>
unsigned settle(Tile* tile, const TilesAround& around, const TileBounds& bounds, bool* isLong) {
    const Edges edges(around);
    const Lines rows = {tile->keys, edges.above, edges.below, edges.left, edges.right};
    struct Row {
        Line keys, before, past;
    };
    const auto load = [&](int y) {
        const Line keys = rows.load(y);
        return Row{keys, shiftedUp(keys, edges.left[y + 1]), shiftedDown(keys, edges.right[y + 1])};
    };
    const OuterLines before(*tile);
    Line changes = zeroLine();
    Line longest = zeroLine();
    Row above = load(bounds.top - 1);
    Row row = load(bounds.top);
    for (int y = bounds.top; y <= bounds.bottom; ++y) {
        const Row below = load(y + 1);
        const Line across = smaller(arrive<Order>(above.keys, smaller(above.before, above.past)),
                                    arrive<Order>(below.keys, smaller(below.before, below.past)));
        const Line along = smaller(arrive<Order>(row.before, smaller(above.before, below.before)),
                                   arrive<Order>(row.past, smaller(above.past, below.past)));
        const Line settled = replaced(row.keys, smaller(across, along), &longest);
        storeLine(settled, rows.line(y));
        markChanges(row.keys, settled, &changes);
        // As it was before: whether nothing changes does not depend on that.
        above = row;
        row = below;
    }
    *isLong |= largestOf(longest) >= kLongTileKey;
    if (isZero(changes)) return 0;
    copyOuterColumns(tile);
    return before.changedParts(*tile);
}

template <class Order>
HWY_INLINE bool reaches(const TileKey* line, TileKey start, TileKey end, const TileKey* beyond) {
    const Line keys = loadLine(line);
    return differs(lowered<Order>(loadLine(beyond), keys, smallerBeside(keys, start, end)), beyond);
}

template <class Order>
unsigned reach(const Tile& tile, const TilesAround& around) {
    constexpr int kLast = kTileSide - 1;
    const Tile& left = *around.left;
    const Tile& right = *around.right;
    const TileKey* lastRow = tile.keys + kTileSide * kLast;
    unsigned sides = 0;
    if (reaches<Order>(tile.keys, left.right[0], right.left[0],
                       around.above->keys + kTileSide * kLast))
        sides |= kAbove;
    if (reaches<Order>(lastRow, left.right[kLast], right.left[kLast], around.below->keys))
        sides |= kBelow;
    const TileKey* above = around.above->keys + kTileSide * kLast;
    const TileKey* below = around.below->keys;
    if (reaches<Order>(tile.left, above[0], below[0], left.right)) sides |= kLeft;
    if (reaches<Order>(tile.right, above[kLast], below[kLast], right.left)) sides |= kRight;
    return sides;
}

bool isTouched(const TilesAround& around) {
    const Edges edges(around);
    const TileKey corners = std::min(std::min(edges.above[0], edges.above[kTileSide + 1]),
                                     std::min(edges.below[0], edges.below[kTileSide + 1]));
    const Line sides = smaller(smaller(loadLine(edges.above + 1), loadLine(edges.below + 1)),
                               smaller(loadLine(edges.left + 1), loadLine(edges.right + 1)));
    return std::min(corners, smallestOf(sides)) < kUnreachedKey;
}

// A vector's lanes from the lowest bits.
HWY_INLINE hn::Mask<KeyTag> maskOf(unsigned bits) {
    unsigned char bytes[sizeof(bits)];
    std::memcpy(bytes, &bits, sizeof(bits));
    return hn::LoadMaskBits(KeyTag(), bytes);
}

bool fill(const TilePixels& pixels, const TileMasks& masks, Tile* tile) {
    const KeyTag d;
    const hn::Rebind<unsigned char, KeyTag> db;
    unsigned anySeeds = 0;
    for (int y = 0; y < kTileSide; ++y) {
        const unsigned free = masks.free[y], seeds = masks.low[y] & ~free;
        unsigned char labels[kTileSide] = {};
        if (seeds != 0)
            std::copy_n(pixels.marker + std::ptrdiff_t{pixels.markerStep} * y, pixels.width,
                        labels);
        for (int x = 0; x < kTileSide; x += kLanes) {
            const auto key =
                hn::IfThenElse(maskOf(free >> x), hn::Set(d, kUnreachedKey), hn::Set(d, kWallKey));
            const auto label = hn::PromoteTo(d, hn::LoadU(db, labels + x));
            hn::StoreU(hn::IfThenElse(maskOf(seeds >> x), label, key), d,
                       tile->keys + kTileSide * y + x);
        }
        anySeeds |= seeds;
    }
    copyOuterColumns(tile);
    return anySeeds != 0;
}

// The labels of a row's free pixels; the others stay.
HWY_INLINE void readRow(const TileKey* keys, unsigned char highLabel, unsigned char* row) {
    const KeyTag d;
    const hn::Rebind<unsigned char, KeyTag> db;
    const auto unreached = hn::Set(d, kUnreachedKey);
    const auto labelMask = hn::Set(d, kTileLabelMask);
    for (int x = 0; x < kTileSide; x += kLanes) {
        const auto key = hn::LoadU(d, keys + x);
        const auto old = hn::PromoteTo(d, hn::LoadU(db, row + x));
        const auto isReached = hn::Lt(key, unreached);
        const auto reached = hn::IfThenElse(isReached, key, hn::Set(d, highLabel));
        const auto isFixed =
            hn::Or(hn::Lt(key, hn::Set(d, 1 << kTileLabelBits)), hn::Gt(key, unreached));
        const auto label = hn::IfThenElse(isFixed, old, hn::And(reached, labelMask));
        hn::StoreU(hn::DemoteTo(db, label), db, row + x);
    }
}

void readLabels(const Tile& tile, const TileBounds& bounds, unsigned char highLabel,
                const TilePixels& pixels) {
    for (int y = bounds.top; y <= bounds.bottom; ++y) {
        unsigned char* marker = pixels.marker + std::ptrdiff_t{pixels.markerStep} * y;
        const TileKey* keys = tile.keys + kTileSide * y;
        if (pixels.width == kTileSide) {
            readRow(keys, highLabel, marker);
        } else {
            unsigned char row[kTileSide] = {};
            std::copy_n(marker, pixels.width, row);
            readRow(keys, highLabel, row);
            std::copy_n(row, pixels.width, marker);
        }
    }
}

}  // namespace

template <class Order>
constexpr TileRows makeRows() {
    return {
        Order::kNeighbours, Order::isLong, fill,      relax<Order>, Order::kPixelsPerRound * kParts,
        settle<Order>,      reach<Order>,  isTouched, readLabels};
}
constexpr TileRows kMarchingRows = makeRows<Marching>();
constexpr TileRows kChessboardRows = makeRows<Stepping<Neighbours::Eight>>();
constexpr TileRows kCityBlockRows = makeRows<Stepping<Neighbours::Four>>();

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<TileRows> kMarchingTileBuilds = NUMERIC_ROW_BUILDS(kMarchingRows);
const RowBuilds<TileRows> kChessboardTileBuilds = NUMERIC_ROW_BUILDS(kChessboardRows);
const RowBuilds<TileRows> kCityBlockTileBuilds = NUMERIC_ROW_BUILDS(kCityBlockRows);
}  // namespace numeric
#endif
