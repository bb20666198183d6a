#include "numeric/labelling/label_reuse.h"

#include <algorithm>

#include "numeric/base/bit_rows.h"

namespace numeric {
namespace {

int cellsAcross(int pixels, int cellShift) {
    return ((pixels - 1) >> cellShift) + 1;
}

/// About a cell to an area, but no more than can be looked up fast.
std::int64_t wantedCells(std::int64_t areas) {
    constexpr std::int64_t kFastGrid = 8192;
    return std::min(areas, kFastGrid + areas / 16);
}

}  // namespace

int LabelReuse::layOutGrids(int width, int height, int cellShift, Grid* grids) {
    std::int64_t firstCell = 0;
    int count = 0;
    int columns = 0;
    int rows = 0;
    do {
        columns = cellsAcross(width, cellShift + count);
        rows = cellsAcross(height, cellShift + count);
        grids[count] = {firstCell, columns + 2, rows + 2};
        firstCell = grids[count++].end();
    } while (columns > 1 || rows > 1);
    return count;
}

LabelReuse::LabelReuse(ScratchLayout& layout, int width, int height, std::int64_t mostRuns)
    : m_width(width), m_height(height) {
    const int grids = layOutGrids(width, height, kSmallestCellShift, m_grids);
    const std::int64_t cells = m_grids[grids - 1].end();
    m_heldIn = layout.take<LabelSet>(cells);
    m_firstVisit = layout.take<int>(mostRuns);
    // A run visits one cell, and one more for each border between two cells that it crosses.
    m_visits = layout.take<Visit>(mostRuns + std::int64_t{m_grids[0].columns} * height);
    m_lastArea = layout.take<int>(cells);
    m_visitsIn = layout.take<int>(cells);
    m_bestGrid = layout.take<signed char>(cells);
}

void LabelReuse::begin(const Demand& demand) {
    m_demand = demand;
    m_cellShift = kSmallestCellShift;
    const std::int64_t pixels = std::int64_t{m_width} * m_height;
    while (wantedCells(demand.areas) << 2 * m_cellShift < pixels) ++m_cellShift;
    m_rowMask = (1 << (m_cellShift - kSmallestCellShift)) - 1;
    m_gridCount = layOutGrids(m_width, m_height, m_cellShift, m_grids);

    std::fill_n(m_firstVisit, demand.areas, kNone);
    std::fill_n(m_lastArea, m_grids[0].end(), kNone);
    std::fill_n(m_visitsIn, m_grids[m_gridCount - 1].end(), 0);
    m_visitCount = 0;
    m_turn = 0;
    for (int i = 0; i < 4; ++i) {
        const int inRange = std::clamp(demand.labels - i * kWordBits, 0, kWordBits);
        m_outOfRange.words[i] = inRange == kWordBits ? 0 : ~BitWord{0} << inRange;
    }
}

void LabelReuse::addRun(int area, int start, int end, int y) {
    const int last = (end - 1) >> m_cellShift;
    for (int column = start >> m_cellShift; column <= last; ++column) {
        const Visit visit{column, y >> m_cellShift, m_firstVisit[area]};
        const std::int64_t at = cell(visit, 0);
        if (m_lastArea[at] == area) continue;
        m_lastArea[at] = area;
        ++m_visitsIn[at];
        m_visits[m_visitCount] = visit;
        m_firstVisit[area] = m_visitCount++;
    }
}

void LabelReuse::countVisits() {
    for (int grid = 1; grid < m_gridCount; ++grid) {
        const Grid& fine = m_grids[grid - 1];
        for (int row = 0; row < fine.rows - 2; ++row)
            for (int column = 0; column < fine.columns - 2; ++column)
                m_visitsIn[m_grids[grid].cell(column >> 1, row >> 1)] +=
                    m_visitsIn[fine.cell(column, row)];
    }
}

int LabelReuse::visitsAround(const Grid& grid, std::int64_t cell) const {
    int sum = 0;
    for (const std::int64_t at : {cell - grid.columns, cell, cell + grid.columns})
        sum += m_visitsIn[at - 1] + m_visitsIn[at] + m_visitsIn[at + 1];
    return sum;
}

/// From the coarsest grid down: a cell that is usable itself has its parent's best grid, if any.
void LabelReuse::findBestGrids() {
    m_usedGrids = 1;
    for (int i = m_gridCount - 1; i >= 0; --i) {
        const Grid& grid = m_grids[i];
        for (int row = 0; row < grid.rows - 2; ++row)
            for (int column = 0; column < grid.columns - 2; ++column) {
                const std::int64_t at = grid.cell(column, row);
                int best = kNone;
                if (visitsAround(grid, at) <= m_demand.labels) {
                    best = i;
                    if (i + 1 < m_gridCount)
                        best = std::max<int>(
                            best, m_bestGrid[m_grids[i + 1].cell(column >> 1, row >> 1)]);
                }
                m_bestGrid[at] = static_cast<signed char>(best);
                if (i == 0 && m_visitsIn[at] > 0) m_usedGrids = std::max(m_usedGrids, best + 1);
            }
    }
}

/// The labels of a word of the set that are held in the visit's cell or one beside it.
BitWord LabelReuse::heldAround(const Visit& visit, int grid, int word) const {
    const int columns = m_grids[grid].columns;
    const LabelSet* const centre = m_heldIn + cell(visit, grid);
    BitWord held = 0;
    for (int row = -1; row <= 1; ++row)
        for (int column = -1; column <= 1; ++column)
            held |= centre[row * columns + column].words[word];
    return held;
}

/// The first label in turn that is not held around any of the visits, or kNone.
int LabelReuse::nextFree(int firstVisit, int grid) const {
    const int first = m_turn / kWordBits;
    const BitWord fromTurn = ~BitWord{0} << m_turn % kWordBits;
    for (int i = 0; i <= 4; ++i) {  // the first word comes twice: its upper part, its lower part
        const int word = (first + i) % 4;
        const BitWord wanted = i == 0 ? fromTurn : i == 4 ? ~fromTurn : ~BitWord{0};
        BitWord taken = m_outOfRange.words[word];
        for (int v = firstVisit; v != kNone; v = m_visits[v].next)
            taken |= heldAround(m_visits[v], grid, word);
        if (~taken & wanted) return word * kWordBits + __builtin_ctzll(~taken & wanted);
    }
    return kNone;
}

int LabelReuse::chooseLabel(int firstVisit) const {
    int grid = m_usedGrids - 1;
    for (int v = firstVisit; grid > 0 && v != kNone; v = m_visits[v].next)
        grid = std::min<int>(grid, m_bestGrid[cell(m_visits[v], 0)]);
    for (grid = std::max(grid, 0); grid >= 0; --grid) {
        const int label = nextFree(firstVisit, grid);
        if (label != kNone) return label;
    }
    return m_turn;
}

void LabelReuse::hold(int label, const Visit& visit) {
    const BitWord bit = BitWord{1} << label % kWordBits;
    for (int i = 0; i < m_usedGrids; ++i) m_heldIn[cell(visit, i)].words[label / kWordBits] |= bit;
}

void LabelReuse::chooseLabels(unsigned char* labelOfArea) {
    countVisits();
    findBestGrids();
    std::fill_n(m_heldIn, m_grids[m_usedGrids - 1].end(), LabelSet{});
    constexpr int kAhead = 16;
    for (int area = 0; area < m_demand.areas; ++area) {
        __builtin_prefetch(m_visits + m_firstVisit[std::min(area + kAhead, m_demand.areas - 1)]);
        const int label = chooseLabel(m_firstVisit[area]);
        m_turn = label + 1 < m_demand.labels ? label + 1 : 0;
        labelOfArea[area] = static_cast<unsigned char>(m_demand.smallest + label);
        for (int v = m_firstVisit[area]; v != kNone; v = m_visits[v].next) hold(label, m_visits[v]);
    }
}

}  // namespace numeric
