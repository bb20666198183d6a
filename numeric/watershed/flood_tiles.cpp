#include "numeric/watershed/flood.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "numeric/base/scratch.h"
#include "numeric/watershed/agreed_areas.h"

namespace numeric {
namespace {

/// First in, first out, with room for every tile once.
class TileQueue {
public:
    TileQueue(std::int64_t room, ScratchLayout& layout)
        : m_room(room), m_ids(layout.take<int>(room)) {}

    std::int64_t size() const { return m_size; }
    int front() const { return m_ids[m_first]; }
    void push(int id) {
        m_ids[m_end] = id;
        if (++m_end == m_room) m_end = 0;
        ++m_size;
    }
    int pop() {
        const int id = front();
        if (++m_first == m_room) m_first = 0;
        --m_size;
        return id;
    }

private:
    std::int64_t m_room;
    int* m_ids;
    std::int64_t m_first = 0;
    std::int64_t m_end = 0;
    std::int64_t m_size = 0;
};

/// Floods tile by tile. The keys only ever get smaller, until each is what arrives from its
/// neighbours; that state is unique, so it is the flood's.
///
/// Only tiles with a free pixel, and those whose seeds lie beside one, have keys at all. A tile is
/// visited when something smaller arrives at its side, in the order in which that is found out: so
/// the front moves through the plane as in a flood by a queue, a tile at a time. At last every tile
/// is settled, and where that finds anything, its surroundings are visited and settled again.
class TileFlood {
public:
    TileFlood(const FloodPlanes& planes, const TileRows& rows, ScratchLayout layout)
        : m_planes(planes),
          m_rows(rows),
          m_across(std::int64_t{planes.width() + kTileSide - 1} / kTileSide),
          m_down(std::int64_t{planes.height() + kTileSide - 1} / kTileSide),
          m_words(wordsOf(planes.width())),
          m_free(layout.take<BitWord>(m_words * planes.height())),
          m_low(layout.take<BitWord>(m_words * planes.height())),
          m_areas(planes.width(), planes.height(), layout),
          m_tiles(layout.take<Tile>(m_across * m_down + 1)),
          m_places(layout.take<Place>(m_across * m_down + 1)),
          m_ids(layout.take<int>((m_across + 2) * (m_down + 2))),
          m_toVisit(m_across * m_down, layout),
          m_toSettle(m_across * m_down, layout),
          m_lowTiles(layout.take<BitWord>(m_words * m_down)),
          m_size(std::max(layout.used(), m_areas.size())) {}

    std::int64_t size() const { return m_size; }

    bool run(const WatershedRows& rows) {
        const int freeLevel = findFreeLevel();
        if (freeLevel < 0) return true;
        m_levels = {static_cast<unsigned char>(freeLevel), 0, false, 0};
        for (int y = 0; y < m_planes.height(); ++y) {
            rows.scan(m_planes.relief.row(y), m_planes.marker.row(y), m_planes.width(),
                      m_free + m_words * y, m_low + m_words * y, &m_levels);
            if (m_levels.areMixed) return false;
        }
        if (areCorridors()) return false;
        m_areas.label(m_planes.marker, m_rows.neighbours, m_levels.highLabel,
                      {m_free, m_low, static_cast<int>(m_words)});
        if (flood()) return true;
        clearLabels();
        return false;
    }

private:
    /// Where a tile is and how it stands.
    struct Place {
        int x, y;
        TileBounds bounds;
        bool isActive;  // has free pixels
        bool hasSeeds;
        bool isQueued;
        bool isUnsettled;
        bool hasLabels;
        std::uint8_t visits;
        std::uint16_t reached;  // pixels that have been reached
    };

    /// Rows of tiles in a band: few enough to stay near, enough that not many areas are cut.
    static constexpr int kBandTiles = 8;
    /// The work is paid for with pixels, as many for a round or a settling as the queue floods in
    /// that time. A tile brings in half a round when it is made, and its first settling when it is
    /// visited. No more is saved up than some rounds for each tile of the plane: to flood it again
    /// and again is too much work, however fast it went at first.
    static constexpr int kRoundsSaved = 4;
    /// Free areas that are no wider on average, along rows or columns, are lines.
    static constexpr double kLineWidth = 2.5;
    /// One row in so many tells how thin the free areas are, at uneven distances, which no period
    /// of the picture keeps step with.
    static constexpr int kSampledRows = 7;
    /// A tile that is visited more often has winding paths inside, which one round leaves undone.
    static constexpr int kQuickVisits = 2;
    static constexpr int kThoroughRounds = 4;

    int& idAt(int x, int y) const { return m_ids[(m_across + 2) * (y + 1) + x + 1]; }

    TilePixels pixels(const Place& place) const {
        const int x = place.x * kTileSide, y = place.y * kTileSide;
        return {m_planes.marker.row(y) + x, m_planes.marker.stepBytes,
                std::min(kTileSide, m_planes.width() - x),
                std::min(kTileSide, m_planes.height() - y)};
    }

    TileMasks masks(const Place& place) const {
        TileMasks result{};
        const int firstRow = place.y * kTileSide;
        const int rows = std::min(kTileSide, m_planes.height() - firstRow);
        for (int row = 0; row < rows; ++row) {
            result.free[row] = freeMask(place.x, firstRow + row);
            result.low[row] = maskOfTile(m_low + m_words * (firstRow + row), place.x);
        }
        return result;
    }

    TilesAround around(const Place& place) const {
        const int* middle = &idAt(place.x, place.y);
        const int* above = middle - (m_across + 2);
        const int* below = middle + (m_across + 2);
        return {m_tiles + above[0],  m_tiles + middle[-1], m_tiles + middle[1], m_tiles + below[0],
                m_tiles + above[-1], m_tiles + above[1],   m_tiles + below[-1], m_tiles + below[1]};
    }

    /// The level of the first free pixel, or -1.
    int findFreeLevel() const {
        for (int y = 0; y < m_planes.height(); ++y) {
            const unsigned char* marker = m_planes.marker.row(y);
            const void* first = std::memchr(marker, 0, static_cast<std::size_t>(m_planes.width()));
            if (first)
                return m_planes.relief.row(y)[static_cast<const unsigned char*>(first) - marker];
        }
        return -1;
    }

    /// Whether the free areas are lines, or corridors that are too long for tiles. Both pass
    /// through a tile at different times, each time for few pixels. Told beforehand, since what
    /// tiles did until they gave up is lost.
    bool areCorridors() const {
        std::int64_t pixels = 0, runsOfRows = 0, runsOfColumns = 0;
        for (std::int64_t i = 1; kSampledRows * (i + 1) <= m_planes.height(); ++i) {
            const BitWord* row = m_free + m_words * (kSampledRows * i + i * i % kSampledRows);
            const BitWord* above = row - m_words;
            BitWord before = 0;
            for (int k = 0; k < m_words; ++k) {
                const BitWord word = row[k];
                if (word != 0) {
                    pixels += __builtin_popcountll(word);
                    runsOfRows += __builtin_popcountll(word & ~(word << 1 | before));
                    runsOfColumns += __builtin_popcountll(word & ~above[k]);
                }
                before = word >> (kWordBits - 1);
            }
        }
        const auto count = static_cast<double>(pixels);
        const double leastWidth = count / static_cast<double>(std::max(runsOfRows, runsOfColumns));
        const double width = 2 * count / static_cast<double>(runsOfRows + runsOfColumns);
        const double pixelsOfSeed = kSampledRows * count / static_cast<double>(m_levels.seeds);
        // Without seeds nothing flows through corridors.
        return leastWidth < kLineWidth ||
               (m_levels.seeds > 0 && m_rows.isLong(width, pixelsOfSeed));
    }

    /// Works in bands of rows of tiles, so that tiles are settled while they are still near: one
    /// band later, since the next one floods back into them. False if it gives up.
    bool flood() {
        std::fill_n(m_lowTiles, m_words * m_down, BitWord{0});
        for (int y = 0; y < m_planes.height(); ++y)
            for (int k = 0; k < m_words; ++k)
                m_lowTiles[m_words * (y / kTileSide) + k] |= m_low[m_words * y + k];
        std::fill_n(m_ids, (m_across + 2) * (m_down + 2), 0);
        std::fill_n(m_tiles[0].keys, kTileSide * kTileSide, kWallKey);
        std::fill_n(m_tiles[0].left, kTileSide, kWallKey);
        std::fill_n(m_tiles[0].right, kTileSide, kWallKey);
        m_places[0] = {};
        for (int top = 0; top < m_down; top += kBandTiles) {
            const int begin = m_count + 1;
            const int bottom = static_cast<int>(std::min(m_down, std::int64_t{top} + kBandTiles));
            for (int y = top; y < bottom; ++y) makeRowOfTiles(y);
            enqueueTouchedTiles(top);
            if (!visitTiles()) return false;
            settleTiles(begin);
            if (m_isLong) return false;
        }
        while (m_toSettle.size() > 0) {
            settleTiles(m_count + 1);
            if (m_isLong || !visitTiles()) return false;
        }
        return true;
    }

    /// The tiles of the first row of a band, which the band above has reached or made.
    void enqueueTouchedTiles(int y) {
        for (int x = 0; x < m_across; ++x) {
            const int id = idAt(x, y);
            const Place& place = m_places[id];
            if (place.isActive && (place.hasSeeds || m_rows.isTouched(around(place)))) enqueue(id);
        }
    }

    void writeLabels(int id) {
        Place& place = m_places[id];
        if (!place.isActive) return;
        m_rows.readLabels(m_tiles[id], place.bounds, m_levels.highLabel, pixels(place));
        place.hasLabels = true;
    }

    /// Takes back what labels were written.
    void clearLabels() const {
        for (int id = 1; id <= m_count; ++id) {
            const Place& place = m_places[id];
            if (!place.hasLabels) continue;
            const TilePixels tile = pixels(place);
            for (int y = 0; y < tile.height; ++y) {
                unsigned char* marker = tile.marker + std::ptrdiff_t{tile.markerStep} * y;
                const std::uint16_t free = freeMask(place.x, place.y * kTileSide + y);
                for (int x = 0; x < tile.width; ++x)
                    if ((free >> x & 1) != 0) marker[x] = 0;
            }
        }
    }

    /// A tile's part of a mask.
    static std::uint16_t maskOfTile(const BitWord* mask, int tileX) {
        constexpr int kTilesPerWord = kWordBits / kTileSide;
        const BitWord word = mask[tileX / kTilesPerWord];
        return static_cast<std::uint16_t>(word >> tileX % kTilesPerWord * kTileSide);
    }
    /// The free pixels of a tile's row.
    std::uint16_t freeMask(int tileX, int row) const {
        return maskOfTile(m_free + m_words * row, tileX);
    }
    /// Whether not all of a tile is wall.
    bool isLow(int x, int y) const { return maskOfTile(m_lowTiles + m_words * y, x) != 0; }

    void makeRowOfTiles(int y) {
        const int rows = std::min(kTileSide, m_planes.height() - y * kTileSide);
        const BitWord* const words = m_free + m_words * (std::int64_t{y} * kTileSide);
        for (int word = 0; word < m_words; ++word) {
            BitWord all = 0;
            for (int row = 0; row < rows; ++row) all |= words[m_words * row + word];
            for (int x = word * (kWordBits / kTileSide); all != 0; ++x, all >>= kTileSide)
                if ((all & 0xFFFF) != 0) activate(x, y, static_cast<unsigned>(all & 0xFFFF));
        }
    }

    /// Makes a tile with free pixels in these columns, and its neighbours beside those.
    void activate(int x, int y, unsigned columns) {
        const int id = make(x, y);
        Place& place = m_places[id];
        place.isActive = true;
        unsettle(id);
        constexpr int kLast = kTileSide - 1;
        const int firstRow = y * kTileSide;
        int top = 0, bottom = std::min(kLast, m_planes.height() - 1 - firstRow);
        while (freeMask(x, firstRow + top) == 0) ++top;
        while (freeMask(x, firstRow + bottom) == 0) --bottom;
        int left = 0, right = kLast;
        while ((columns >> left & 1) == 0) ++left;
        while ((columns >> right & 1) == 0) --right;
        place.bounds = {static_cast<std::uint8_t>(top), static_cast<std::uint8_t>(bottom),
                        static_cast<std::uint8_t>(left), static_cast<std::uint8_t>(right)};
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                if ((dy < 0 && top > 0) || (dy > 0 && bottom < kLast)) continue;
                if ((dx < 0 && left > 0) || (dx > 0 && right < kLast)) continue;
                const int nextX = x + dx, nextY = y + dy;
                if (nextX >= 0 && nextY >= 0 && nextX < m_across && nextY < m_down &&
                    isLow(nextX, nextY))
                    make(nextX, nextY);
            }
    }

    int make(int x, int y) {
        int& id = idAt(x, y);
        if (id != 0) return id;
        id = ++m_count;
        m_credit += m_rows.pixelsPerRound / 2;
        if (m_count < m_across * m_down) fetch(m_count + 1);
        Place& place = m_places[id];
        place = {x, y, {}, false, false, false, false, false, 0, 0};
        place.hasSeeds = m_rows.fill(pixels(place), masks(place), &m_tiles[id]);
        if (place.hasSeeds) enqueue(id);
        return id;
    }

    void enqueue(int id) {
        if (!std::exchange(m_places[id].isQueued, true)) m_toVisit.push(id);
    }

    void enqueueActive(int id) {
        if (m_places[id].isActive) enqueue(id);
    }

    /// Starts to bring a tile near.
    void fetch(int id) const {
        const auto* bytes = reinterpret_cast<const char*>(m_tiles + id);
        for (std::size_t line = 0; line < sizeof(Tile); line += 64)
            __builtin_prefetch(bytes + line, 1);
    }

    /// Visits the tiles in the queue, and those that come to it meanwhile. False if that takes too
    /// long.
    bool visitTiles() {
        while (m_toVisit.size() > 0) {
            const int id = m_toVisit.pop();
            if (m_toVisit.size() > 0) fetch(m_toVisit.front());
            Place& place = m_places[id];
            place.isQueued = false;
            const TilesAround tiles = around(place);
            if (place.isActive) {
                const int rounds = place.visits < kQuickVisits ? 1 : kThoroughRounds;
                if (place.visits < kQuickVisits) ++place.visits;
                const Relaxed relaxed = m_rows.relax(&m_tiles[id], tiles, place.bounds, rounds);
                if (place.reached == 0) m_credit += m_rows.pixelsPerRound;
                m_credit += relaxed.reached - place.reached;
                place.reached = static_cast<std::uint16_t>(relaxed.reached);
                pay(relaxed.rounds);
                if (m_credit < 0) return false;
                if (relaxed.changed == 0) continue;
                unsettle(place, relaxed.changed);
            }
            const unsigned sides = m_rows.reach(m_tiles[id], tiles);
            if ((sides & kAbove) != 0) enqueueActive(idAt(place.x, place.y - 1));
            if ((sides & kLeft) != 0) enqueueActive(idAt(place.x - 1, place.y));
            if ((sides & kRight) != 0) enqueueActive(idAt(place.x + 1, place.y));
            if ((sides & kBelow) != 0) enqueueActive(idAt(place.x, place.y + 1));
        }
        return true;
    }

    void pay(int rounds) {
        const std::int64_t most =
            std::int64_t{kRoundsSaved} * m_rows.pixelsPerRound * m_across * m_down;
        m_credit = std::min(m_credit, most) - std::int64_t{rounds} * m_rows.pixelsPerRound;
    }

    void unsettle(int id) {
        Place& place = m_places[id];
        if (place.isActive && !std::exchange(place.isUnsettled, true)) m_toSettle.push(id);
    }

    /// These parts of a tile have changed: it and the tiles beside those are to be settled again.
    void unsettle(const Place& place, unsigned parts) {
        const int left = (parts & kLeft) != 0 ? -1 : 0, right = (parts & kRight) != 0 ? 1 : 0;
        const int above = (parts & kAbove) != 0 ? -1 : 0, below = (parts & kBelow) != 0 ? 1 : 0;
        for (int dy = above; dy <= below; ++dy)
            for (int dx = left; dx <= right; ++dx) unsettle(idAt(place.x + dx, place.y + dy));
    }

    /// Settles the tiles that wait for it, up to one that was made as late as this, and writes
    /// their labels where nothing was left to do.
    void settleTiles(int end) {
        for (std::int64_t left = m_toSettle.size(); left > 0 && m_toSettle.front() < end; --left) {
            const int id = m_toSettle.pop();
            if (left > 1) fetch(m_toSettle.front());
            Place& place = m_places[id];
            place.isUnsettled = false;
            if (place.reached > 0) pay(1);
            const unsigned changed =
                m_rows.settle(&m_tiles[id], around(place), place.bounds, &m_isLong);
            if (changed != 0) {
                unsettle(place, changed);
                enqueue(id);
            } else {
                writeLabels(id);
            }
        }
    }

    FloodPlanes m_planes;
    const TileRows& m_rows;
    std::int64_t m_across;
    std::int64_t m_down;
    std::int64_t m_words;
    BitWord* m_free;      // masks of the rows
    BitWord* m_low;       // of their pixels that are not above the free level
    AgreedAreas m_areas;  // in the room of what comes after it
    Tile* m_tiles;        // the first is all wall
    Place* m_places;
    int* m_ids;  // of the tiles, with a rim around; 0 where there is none
    TileQueue m_toVisit;
    TileQueue m_toSettle;
    BitWord* m_lowTiles;  // columns of a row of tiles with a pixel that is not above the free level
    std::int64_t m_size;
    TwoLevels m_levels{};
    int m_count = 0;
    std::int64_t m_credit = 0;
    bool m_isLong = false;
};

}  // namespace

bool floodByTiles(const FloodPlanes& planes, const WatershedRows& rows, const TileRows& tileRows,
                  unsigned char* scratch, int scratchSize) {
    if (TileFlood(planes, tileRows, {}).size() > scratchSize) return false;
    return TileFlood(planes, tileRows, ScratchLayout(scratch)).run(rows);
}

}  // namespace numeric
