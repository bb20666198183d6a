#pragma once

#include <cstdint>

#include "numeric/base/bit_rows.h"
#include "numeric/base/scratch.h"

namespace numeric {

/// Gives labels to more areas than there are labels so that areas with the same label lie far
/// apart.
///
/// The plane is cut into square cells, about as many as there are areas or, where areas are many,
/// fewer. Merging the cells 2 x 2 gives ever coarser grids. Each area, in order, takes the next
/// label in turn that no area holds in the 3 x 3 cells around any of its own, on the coarsest grid
/// on which these cells hold no more areas than there are labels. There a label is always free,
/// unless the area itself spans several cells; then finer grids are tried. So areas that share a
/// label are about the size of a cell apart, and the cells are as large as the density of areas
/// near by allows. Where even the finest grid leaves no choice, labels come in turn.
class LabelReuse {
public:
    /// The labels smallest to smallest + labels - 1 for this many areas.
    struct Demand {
        int areas;
        int smallest;
        int labels;
    };

    /// Lays itself out for planes of this size with at most this many runs.
    LabelReuse(ScratchLayout& layout, int width, int height, std::int64_t mostRuns);

    /// Afterwards the runs that are wanted are added in raster order, then the labels are chosen.
    void begin(const Demand& demand);
    /// The runs of every area's first row or strip are wanted, and all runs of these rows: enough
    /// to tell an area's cells.
    bool wantsWholeRow(int y) const { return (y & m_rowMask) == 0; }
    /// Pixels start to end - 1 of row y.
    void addRun(int area, int start, int end, int y);
    void chooseLabels(unsigned char* labelOfArea);

private:
    static constexpr int kSmallestCellShift = 2;
    static constexpr int kMostGrids = 30;
    static constexpr int kNone = -1;

    struct LabelSet {
        BitWord words[4];
    };
    /// An area has pixels in this cell of the finest grid.
    struct Visit {
        int column;
        int row;
        int next;  // another visit of the same area, or kNone
    };
    /// Part of the arrays of cells. A rim of spare cells gives every cell eight neighbours.
    struct Grid {
        std::int64_t firstCell;
        int columns;
        int rows;

        std::int64_t cell(int column, int row) const {
            return firstCell + std::int64_t{row + 1} * columns + column + 1;
        }
        std::int64_t end() const { return firstCell + std::int64_t{rows} * columns; }
    };

    static int layOutGrids(int width, int height, int cellShift, Grid* grids);
    std::int64_t cell(const Visit& visit, int grid) const {
        return m_grids[grid].cell(visit.column >> grid, visit.row >> grid);
    }
    int visitsAround(const Grid& grid, std::int64_t cell) const;
    void countVisits();
    void findBestGrids();
    BitWord heldAround(const Visit& visit, int grid, int word) const;
    int nextFree(int firstVisit, int grid) const;
    int chooseLabel(int firstVisit) const;
    void hold(int label, const Visit& visit);

    int m_width;
    int m_height;
    Demand m_demand{};
    int m_cellShift = 0;
    int m_rowMask = 0;
    int m_gridCount = 0;
    int m_usedGrids = 0;
    Grid m_grids[kMostGrids];
    LabelSet m_outOfRange{};
    int m_turn = 0;  // the label to be tried next, counted from 0
    int m_visitCount = 0;
    int* m_firstVisit;  // of each area
    Visit* m_visits;
    int* m_lastArea;          // per cell of the finest grid: the area whose visit came last
    int* m_visitsIn;          // per cell
    signed char* m_bestGrid;  // per cell: the coarsest usable grid from here up, or kNone
    LabelSet* m_heldIn;       // per cell: the labels that areas in it hold
};

}  // namespace numeric
