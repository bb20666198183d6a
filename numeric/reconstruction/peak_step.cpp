#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "numeric/base/checks.h"
#include "numeric/base/neighbours.h"
#include "numeric/base/scratch.h"
#include "numeric/base/views.h"
#include "numeric/reconstruction/peak_step_rows.h"

// Greyscale reconstruction by dilation: the plane grows under the bound until no pixel can rise.
// The result is the only such plane, so rows may be raised in any order (Vincent 1993).
//
//   band      |  pass down     ^  sweep up, on into the bands above as far as anything rises
//   of rows   v                |
//             raised segments of a row wait in a queue and raise the rows beside them, until the
//             allowance is spent; the rest waits in marked rows for further sweeps, up and down
//
// Along a row a value is clamped from pixel to pixel; clamps compose, so that a vector needs a few
// steps only (peak_step_rows.cpp).
namespace numeric {

const SlotTable<PeakStepRows> kPeakStepSlots8(kPeakStep8Builds);
const SlotTable<PeakStepRows> kPeakStepSlots4(kPeakStep4Builds);

namespace {

/// What a band of rows takes of both planes: it stays in the cache from the way down to the way up,
/// and is high enough for most of what rises to end in the band above.
constexpr int kBandBytes = 2 << 20;

std::int64_t scratchBytes(int width, int height) {
    return std::int64_t{16} * width + height + 130;
}

/// A segment of a row that was raised and has not yet raised a neighbouring row.
struct Task {
    int row;
    int otherRow;
    Segment columns;
};

/// First in, first out, in the given bytes.
class TaskQueue {
public:
    TaskQueue(unsigned char* bytes, std::int64_t byteCount) {
        constexpr std::int64_t kAlignment = alignof(Task) - 1;
        m_capacity = static_cast<int>((byteCount - kAlignment) / std::int64_t{sizeof(Task)});
        m_tasks = ScratchLayout(bytes).take<Task>(m_capacity);
    }

    bool isEmpty() const { return m_count == 0; }
    bool isFull() const { return m_count == m_capacity; }
    void push(const Task& task) {
        m_tasks[m_next] = task;
        if (++m_next == m_capacity) m_next = 0;
        ++m_count;
    }
    Task pop() {
        const int first = m_next >= m_count ? m_next - m_count : m_next - m_count + m_capacity;
        --m_count;
        return m_tasks[first];
    }

private:
    Task* m_tasks;
    int m_capacity;
    int m_next = 0;
    int m_count = 0;
};

/// What a row has yet to pass on: nothing, or its values along itself and to the next row of the
/// sweep, or also back to the row before.
enum class Wait : unsigned char { No, ForNextRow, ForBoth };

/// What a row function costs for a segment, in units of about one vector.
std::int64_t workOf(Segment columns) {
    return 2 + (columns.last - columns.first) / 16;
}

/// One call. Each band of rows is passed down and then swept up, and on into the bands above it as
/// far as anything rises. Behind the row that a sweep has reached, whatever can still rise is
/// raised at once, as long as the allowance lasts. What exceeds it waits in marked rows for further
/// sweeps, up and down by turns; when none is left, the result is found.
class Reconstruction {
public:
    Reconstruction(const PeakStepRows& rows, int sidewaysReach, PlaneView<const float> bound,
                   PlaneView<float> plane, unsigned char* scratch)
        : m_rows(rows),
          m_sidewaysReach(sidewaysReach),
          m_bound(bound),
          m_plane(plane),
          m_waits(reinterpret_cast<Wait*>(scratch)),
          m_queue(scratch + plane.height, scratchBytes(plane.width, plane.height) - plane.height) {}

    void run();

private:
    Segment wholeRow() const { return {0, m_plane.width - 1}; }
    bool isBehind(int row) const {
        return row >= std::min(m_firstRow, m_reachedRow) &&
               row <= std::max(m_firstRow, m_reachedRow);
    }

    void lowerAndPassDown(int firstRow, int lastRow);
    void sweep(int firstRow, int lastRow, int direction);
    void settle();
    void follow(int x, int row);
    int runStraight(int x, int row, int direction);

    Raised raise(int row, int sourceRow, Segment changed, Segment waiting = {});
    bool raisePixel(int x, int row, float value);
    Segment spread(int row, Segment columns);
    Segment spreadFrom(int x, int row);
    void enqueue(int row, int otherRow, Segment columns);
    void passOn(int row, int sourceRow, const Raised& raised);
    void putOff(int row);

    const PeakStepRows& m_rows;
    const int m_sidewaysReach;  // of the neighbours in the next row
    const PlaneView<const float> m_bound;
    const PlaneView<float> m_plane;
    Wait* const m_waits;
    TaskQueue m_queue;

    // Of the sweep under way.
    int m_firstRow = 0;
    int m_reachedRow = 0;
    Segment m_pending;  // what the next row must still take from the one reached
    std::int64_t m_allowance = 0;
    bool m_isComplete = true;
};

/// Raises the row from the changed columns of a neighbouring row, and on along the row, there also
/// next to the columns that wait for it.
Raised Reconstruction::raise(int row, int sourceRow, Segment changed, Segment waiting) {
    Raised raised;
    if (!changed.isEmpty())
        raised = m_rows.raise(
            {m_plane.row(sourceRow), m_bound.row(sourceRow), m_bound.row(row), m_plane.row(row)},
            changed, m_plane.width);
    waiting.add(raised.columns);
    if (waiting.isEmpty()) return raised;
    const Segment besides = spread(row, waiting);
    raised.columns.add(besides);
    raised.back.add(besides);
    return raised;
}

/// Returns the columns raised.
Segment Reconstruction::spread(int row, Segment columns) {
    return m_rows.spread(m_bound.row(row), m_plane.row(row), columns, m_plane.width);
}

/// Returns the segment of the pixel and all it raised.
Segment Reconstruction::spreadFrom(int x, int row) {
    Segment columns{x, x};
    columns.add(spread(row, columns));
    return columns;
}

/// Whether the pixel could take anything of the value.
bool Reconstruction::raisePixel(int x, int row, float value) {
    const float bound = m_bound.row(row)[x];
    float& pixel = m_plane.row(row)[x];
    if (!(bound > pixel) || !(value > pixel)) return false;
    pixel = std::min(value, bound) + 0.0F;  // no negative zero
    return true;
}

void Reconstruction::putOff(int row) {
    m_waits[row] = Wait::ForBoth;
    m_isComplete = false;
}

void Reconstruction::enqueue(int row, int otherRow, Segment columns) {
    if (columns.isEmpty() || !isBehind(otherRow)) return;
    if (m_queue.isFull())
        putOff(row);
    else
        m_queue.push({row, otherRow, columns});
}

/// What has risen in the row has yet to raise the rows beside it.
void Reconstruction::passOn(int row, int sourceRow, const Raised& raised) {
    if (row == m_reachedRow) m_pending.add(raised.columns);
    const int nextRow = 2 * row - sourceRow;
    // A single pixel is followed both ways.
    const bool isPixel = raised.columns.first == raised.columns.last;
    enqueue(row, isPixel ? sourceRow : nextRow, raised.columns);
    if (!isPixel) enqueue(row, sourceRow, raised.back);
}

/// Passes a raised pixel straight on, up or down, as long as it could raise nothing else in the
/// next row. Returns the row reached.
int Reconstruction::runStraight(int x, int row, int direction) {
    if (m_plane.width == 1) return row;
    const int left = x > 0 ? x - 1 : x + 1;
    const int right = x + 1 < m_plane.width ? x + 1 : x - 1;
    float value = m_plane.row(row)[x];
    const int start = row;
    for (int next = row + direction; isBehind(next); next += direction) {
        const float* bound = m_bound.row(next);
        float* plane = m_plane.row(next);
        const auto rises = [=](int column) {
            return bound[column] > plane[column] && value > plane[column];
        };
        if (!rises(x) || rises(left) || rises(right)) break;
        plane[x] = value = std::min(value, bound[x]) + 0.0F;
        row = next;
    }
    m_allowance -= std::abs(row - start);
    return row;
}

/// Follows a single raised pixel from row to row, the way up and down corridors.
void Reconstruction::follow(int x, int row) {
    for (;;) {
        if (row == m_reachedRow) m_pending.add({x, x});
        if (m_allowance <= 0) return putOff(row);
        m_allowance -= 2;
        const float value = m_plane.row(row)[x];
        int nextX = 0;
        int nextRow = -1;
        for (const int otherRow : {row - 1, row + 1}) {
            if (!isBehind(otherRow)) continue;
            const int last = std::min(x + m_sidewaysReach, m_plane.width - 1);
            for (int otherX = std::max(x - m_sidewaysReach, 0); otherX <= last; ++otherX) {
                if (!raisePixel(otherX, otherRow, value)) continue;
                if (nextRow >= 0) {
                    const Segment raised = spreadFrom(nextX, nextRow);
                    passOn(nextRow, row, {raised, raised});
                }
                nextX = otherX;
                nextRow = otherRow;
            }
        }
        if (nextRow < 0) return;
        const Segment raised = spreadFrom(nextX, nextRow);
        if (raised.first < raised.last) return passOn(nextRow, row, {raised, raised});
        row = nextX == x ? runStraight(x, nextRow, nextRow - row) : nextRow;
        x = nextX;
    }
}

/// Raises rows from the sweep's first to the one reached until nothing rises any more.
void Reconstruction::settle() {
    while (!m_queue.isEmpty()) {
        const auto [row, otherRow, columns] = m_queue.pop();
        if (columns.first == columns.last) {
            follow(columns.first, row);
        } else if (m_allowance <= 0) {
            putOff(row);
        } else {
            const Raised raised = raise(otherRow, row, columns);
            m_allowance -= workOf(columns) + workOf(raised.columns);
            passOn(otherRow, row, raised);
        }
    }
}

/// From the first row to the last one, and on as long as anything rises there.
void Reconstruction::sweep(int firstRow, int lastRow, int direction) {
    m_firstRow = firstRow;
    m_pending = {};
    for (int row = firstRow; row >= 0 && row < m_plane.height; row += direction) {
        const bool isBeyond = direction * (row - lastRow) > 0;
        if (isBeyond && m_pending.isEmpty()) break;
        if (isBeyond && (m_allowance -= workOf(m_pending)) <= 0) return putOff(row - direction);

        m_reachedRow = row;
        const Wait wait = m_waits[row];
        m_waits[row] = Wait::No;
        const Segment waiting = wait == Wait::No ? Segment() : wholeRow();
        Raised changed = raise(row, row - direction, m_pending, waiting);
        changed.columns.add(waiting);
        if (wait == Wait::ForBoth) changed.back = waiting;
        m_pending = changed.columns;
        if (row == firstRow || changed.back.isEmpty()) continue;
        if (m_allowance <= 0) {
            putOff(row);
            continue;
        }
        passOn(row - direction, row, raise(row - direction, row, changed.back));
        settle();
    }
}

/// The first pass leaves the values along a row to the next one: on hills the next row brings them
/// anyway.
void Reconstruction::lowerAndPassDown(int firstRow, int lastRow) {
    const int width = m_plane.width;
    if (firstRow == 0) m_rows.lower(m_bound.row(0), m_plane.row(0), width);
    for (int y = std::max(firstRow, 1); y <= lastRow; ++y)
        m_rows.lowerAndRaise(m_plane.row(y - 1), m_bound.row(y), m_plane.row(y), width);
}

void Reconstruction::run() {
    const int lastRow = m_plane.height - 1;
    // A sweep may spend on what rises behind it about as much as on itself, each further one four
    // times as much as the one before.
    const std::int64_t allowancePerRow = 2 * workOf(wholeRow());
    const std::int64_t rowBytes = std::int64_t{2 * sizeof(float)} * m_plane.width;
    const int bandRows = static_cast<int>(std::max<std::int64_t>(1, kBandBytes / rowBytes));
    for (int first = 0; first <= lastRow; first += bandRows) {
        const int last = std::min(first + bandRows - 1, lastRow);
        lowerAndPassDown(first, last);
        std::fill(m_waits + first, m_waits + last + 1, Wait::ForNextRow);
        m_allowance += (last + 1 - first) * allowancePerRow;
        sweep(last, first, -1);
    }
    std::int64_t allowance = allowancePerRow * m_plane.height;
    for (int direction = 1; !m_isComplete; direction = -direction) {
        m_isComplete = true;
        m_allowance = allowance *= 4;
        if (direction > 0)
            sweep(0, lastRow, direction);
        else
            sweep(lastRow, 0, direction);
    }
}

}  // namespace

KernelStatus peakStepScratchSize(int width, int height, int* size) {
    return reportScratchSize(width, height, size, scratchBytes);
}

KernelStatus peakStep(const float* bound, int boundStep, float* plane, int planeStep, int width,
                      int height, unsigned char* scratch, int mode) {
    const KernelStatus status = firstError(
        {checkPointers({bound, plane, scratch}), checkSize(width, height),
         checkFloatSteps(width, {boundStep, planeStep}), checkArgument(isNeighbourhood(mode))});
    if (status != Success) return status;

    const bool isDiagonal = neighboursOf(mode) == Neighbours::Eight;
    const SlotTable<PeakStepRows>& table = isDiagonal ? kPeakStepSlots8 : kPeakStepSlots4;
    Reconstruction(table.selected(), isDiagonal ? 1 : 0, {bound, boundStep, width, height},
                   {plane, planeStep, width, height}, scratch)
        .run();
    return Success;
}

}  // namespace numeric
