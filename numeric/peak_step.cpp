#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "numeric/checks.h"
#include "numeric/peak_step_rows.h"
#include "numeric/views.h"

namespace numeric {
namespace {

const SlotTable<PeakStepRows> kPeakStep8(kPeakStep8Builds);
const SlotTable<PeakStepRows> kPeakStep4(kPeakStep4Builds);

constexpr int kChessboard = 0;
constexpr int kCityBlock = 1;

std::int64_t scratchBytes(int width, int height) {
    return std::int64_t{16} * width + height + 130;
}

/// A segment of a row that was raised and has not yet raised the rows above and below.
struct Task {
    int row;
    Segment columns;
};

/// First in, first out, in the given bytes.
class TaskQueue {
public:
    TaskQueue(unsigned char* bytes, std::int64_t byteCount) {
        const auto skipped =
            static_cast<int>(-reinterpret_cast<std::uintptr_t>(bytes) % alignof(Task));
        m_tasks = reinterpret_cast<Task*>(bytes + skipped);
        m_capacity = static_cast<int>((byteCount - skipped) / static_cast<int>(sizeof(Task)));
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

/// One call. Sweeps go up and down by turns. Behind the row that a sweep has reached, whatever can
/// still rise is raised at once, as long as the sweep's allowance lasts; a sweep that completes so
/// has found the result. Rows that must wait for the next sweep are marked.
class Reconstruction {
public:
    Reconstruction(const PeakStepRows& rows, PlaneView<const float> bound, PlaneView<float> plane,
                   unsigned char* scratch)
        : m_rows(rows),
          m_bound(bound),
          m_plane(plane),
          m_isWaiting(scratch),
          m_queue(scratch + plane.height, scratchBytes(plane.width, plane.height) - plane.height) {}

    void run();

private:
    Segment wholeRow() const { return {0, m_plane.width - 1}; }

    void lowerAndPassDown();
    bool sweep(int firstRow, int direction);
    Segment raise(int row, int sourceRow, Segment changed);
    void enqueue(int row, Segment columns);
    void settle(int firstRow, int reachedRow, Segment& pending);

    const PeakStepRows& m_rows;
    PlaneView<const float> m_bound;
    PlaneView<float> m_plane;
    unsigned char* m_isWaiting;
    TaskQueue m_queue;
    std::int64_t m_allowance = 0;
    bool m_isComplete = true;
};

/// The columns of the row that were raised, from the changed columns of a neighbouring row and on
/// along the row.
Segment Reconstruction::raise(int row, int sourceRow, Segment changed) {
    const float* bound = m_bound.row(row);
    float* target = m_plane.row(row);
    const Segment raised =
        m_rows.raise(m_plane.row(sourceRow), bound, target, changed, m_plane.width);
    m_allowance -= 4 + (changed.last - changed.first) / 16;
    return raised.isEmpty() ? raised : m_rows.spread(bound, target, raised, m_plane.width);
}

void Reconstruction::enqueue(int row, Segment columns) {
    if (m_queue.isFull() || m_allowance <= 0) {
        m_isWaiting[row] = 1;
        m_isComplete = false;
    } else {
        m_queue.push({row, columns});
    }
}

/// Raises rows between the sweep's first and the one reached until nothing rises any more.
void Reconstruction::settle(int firstRow, int reachedRow, Segment& pending) {
    const int top = std::min(firstRow, reachedRow);
    const int bottom = std::max(firstRow, reachedRow);
    while (!m_queue.isEmpty()) {
        const Task task = m_queue.pop();
        if (task.row == reachedRow) pending.add(task.columns);
        if (m_allowance <= 0) {
            m_isWaiting[task.row] = 1;
            m_isComplete = false;
            continue;
        }
        for (const int row : {task.row - 1, task.row + 1}) {
            if (row < top || row > bottom) continue;
            const Segment raised = raise(row, task.row, task.columns);
            if (!raised.isEmpty()) enqueue(row, raised);
        }
    }
}

/// Whether nothing is left to raise.
bool Reconstruction::sweep(int firstRow, int direction) {
    m_isComplete = true;
    Segment pending;  // what the next row must still take from this one
    for (int i = 0, row = firstRow; i < m_plane.height; ++i, row += direction) {
        Segment changed;
        if (!pending.isEmpty()) changed = raise(row, row - direction, pending);
        if (m_isWaiting[row]) {
            changed = m_rows.spread(m_bound.row(row), m_plane.row(row), wholeRow(), m_plane.width);
            m_isWaiting[row] = 0;
        }
        pending = changed;
        if (i == 0 || changed.isEmpty()) continue;
        if (m_allowance <= 0) {
            m_isWaiting[row] = 1;
            m_isComplete = false;
            continue;
        }
        const Segment raised = raise(row - direction, row, changed);
        if (raised.isEmpty()) continue;
        enqueue(row - direction, raised);
        settle(firstRow, row, pending);
    }
    return m_isComplete;
}

/// The first pass leaves the values along a row to the next one: on hills the next row brings them
/// anyway.
void Reconstruction::lowerAndPassDown() {
    const int width = m_plane.width;
    m_rows.lower(m_bound.row(0), m_plane.row(0), width);
    for (int y = 1; y < m_plane.height; ++y) {
        m_rows.lower(m_bound.row(y), m_plane.row(y), width);
        m_rows.raise(m_plane.row(y - 1), m_bound.row(y), m_plane.row(y), wholeRow(), width);
    }
}

void Reconstruction::run() {
    lowerAndPassDown();
    std::memset(m_isWaiting, 1, static_cast<std::size_t>(m_plane.height));
    // In units of about one vector. Each sweep may spend four times as much as the one before.
    std::int64_t allowance = std::int64_t{m_plane.width} * m_plane.height / 8 + 64;
    int firstRow = m_plane.height - 1;
    do {
        m_allowance = allowance;
        const bool isDone = sweep(firstRow, firstRow == 0 ? 1 : -1);
        if (isDone) break;
        allowance *= 4;
        firstRow = m_plane.height - 1 - firstRow;
    } while (true);
}

}  // namespace

KernelStatus peakStepScratchSize(int width, int height, int* size) {
    if (!size) return NullPointer;
    const KernelStatus status = checkSize(width, height);
    if (status != Success) return status;
    const std::int64_t bytes = scratchBytes(width, height);
    if (bytes > std::numeric_limits<int>::max()) return BadSize;
    *size = static_cast<int>(bytes);
    return Success;
}

KernelStatus peakStep(const float* bound, int boundStep, float* plane, int planeStep, int width,
                      int height, unsigned char* scratch, int mode) {
    if (!bound || !plane || !scratch) return NullPointer;
    KernelStatus status = checkSize(width, height);
    if (status == Success) status = checkFloatSteps(width, {boundStep, planeStep});
    if (status != Success) return status;
    if (mode != kChessboard && mode != kCityBlock) return BadArgument;

    const SlotTable<PeakStepRows>& table = mode == kChessboard ? kPeakStep8 : kPeakStep4;
    Reconstruction(table.selected(), {bound, boundStep, width, height},
                   {plane, planeStep, width, height}, scratch)
        .run();
    return Success;
}

}  // namespace numeric
