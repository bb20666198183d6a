#include "numeric/watershed/step_sweeps.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "numeric/base/scratch.h"
#include "numeric/watershed/group_sweeps.h"
#include "numeric/watershed/step_key_rows.h"
#include "numeric/watershed/step_label_rows.h"

namespace numeric {
namespace {

const SlotTable<StepKeyRows<std::uint16_t>> kKeyRows16(kStepKey16Builds);
const SlotTable<StepKeyRows<std::int32_t>> kKeyRows32(kStepKey32Builds);
const SlotTable<StepLabelRows> kLabelRows(kStepLabelBuilds);

// More visits on the average, and the queue is faster.
constexpr int kVisitsForKeys = 6;
constexpr int kVisitsForLabels = 12;

constexpr int kLineBytes = 64;

struct alignas(kLineBytes) CacheLine {
    unsigned char bytes[kLineBytes];
};

/// Rows of keys or labels at the same place in their cache lines, one row more above and below,
/// and a line more before and behind it all.
template <class T>
class StepPlane {
public:
    StepPlane(std::int64_t stride, int height, ScratchLayout& layout) : m_stride(stride) {
        const std::int64_t lines = (stride * (std::int64_t{height} + 2) + kPerLine - 1) / kPerLine;
        m_values = reinterpret_cast<T*>(layout.take<CacheLine>(lines + 2));
    }

    std::int64_t stride() const { return m_stride; }
    T* row(int y) const { return m_values + kPerLine + m_stride * (std::int64_t{y} + 1); }

private:
    static constexpr std::int64_t kPerLine = kLineBytes / sizeof(T);

    std::int64_t m_stride;
    T* m_values;
};

int groupsOf(int width, int lanes) {
    return (width + lanes - 1) / lanes;
}

/// What came of flooding a plane as one of two levels.
enum class TwoLevels {
    Done,
    OtherRelief,
    Winding,  // better left to the queue
    Long,     // more steps than the keys can count
};

/// The keys of a plane. They only ever get smaller, until each is what arrives from its neighbours;
/// that state is unique, so it is the flood's.
template <class Key>
class KeySweeps {
public:
    KeySweeps(const FloodPlanes& planes, bool sidesOnly, const StepKeyRows<Key>& rows,
              ScratchLayout& layout)
        : m_planes(planes),
          m_rows(rows),
          m_relax(sidesOnly ? rows.relax4 : rows.relax8),
          m_sweeps(groupsOf(planes.width(), rows.lanes), planes.height(), sidesOnly ? 0 : 1,
                   kVisitsForKeys, layout),
          m_keys(strideOf(planes, rows), planes.height(), layout),
          m_floors(strideOf(planes, rows), planes.height(), layout) {}

    const Key* keys(int y) const { return m_keys.row(y); }
    const Key* floors(int y) const { return m_floors.row(y); }
    const GroupBits* free(int y) const { return m_sweeps.free(y); }
    int words() const { return m_sweeps.words(); }

    /// Floods a plane whose free pixels are all of one level, and whose seeds above it are all of
    /// one label as far as they touch free pixels.
    TwoLevels floodTwoLevels() {
        int freeLevel = -1;
        LevelKinds kinds{false, 255, 0};
        start();
        const auto prepare = [&](int y) {
            const PreparedRow<Key> row = startRow(y);
            const auto isEmpty = [](GroupBits bits) { return bits == 0; };
            if (freeLevel < 0 && !std::all_of(row.needed, row.needed + row.words, isEmpty))
                freeLevel = levelOfFirstFree(y);
            m_rows.prepareTwoLevels(row, static_cast<unsigned char>(freeLevel), &kinds);
            return isTwoLevels(kinds);
        };
        const bool isSettled = converge(prepare, Key{1} << kStepShift);
        if (!isTwoLevels(kinds)) return TwoLevels::OtherRelief;
        if (!isSettled) return TwoLevels::Winding;
        Reach reach;
        for (int y = 0; y < m_planes.height(); ++y)
            m_rows.addReach(keys(y), floors(y), free(y), words(), &reach);
        // A corridor's pixels are nearly all beyond the steps that narrow keys can count.
        if (reach.isLong) return 2 * reach.far > reach.free ? TwoLevels::Winding : TwoLevels::Long;
        for (int y = 0; y < m_planes.height(); ++y)
            m_rows.readLabels(keys(y), kinds.largestHigh, free(y), words(), m_planes.marker.row(y),
                              m_planes.width());
        return TwoLevels::Done;
    }

    /// Makes the keys of any relief. False if its ways are too winding.
    bool sweep() {
        start();
        const auto prepare = [&](int y) {
            m_rows.prepare(startRow(y));
            return true;
        };
        return converge(prepare, Key{1});
    }

private:
    static bool isTwoLevels(const LevelKinds& kinds) {
        return !kinds.otherLevels && kinds.smallestHigh >= kinds.largestHigh;
    }

    static std::int64_t strideOf(const FloodPlanes& planes, const StepKeyRows<Key>& rows) {
        return (std::int64_t{groupsOf(planes.width(), rows.lanes)} + 1) * rows.lanes;
    }

    void start() const {
        m_sweeps.clear();
        for (const int y : {-1, m_planes.height()})
            std::fill_n(m_keys.row(y) - 1, m_keys.stride() + 1, KeyFormat<Key>::kFar);
        findFree(0);
    }

    void findFree(int y) const {
        m_rows.findFree(m_planes.marker.row(y), m_planes.width(), m_sweeps.free(y));
    }

    PreparedRow<Key> startRow(int y) const {
        if (y + 1 < m_planes.height()) findFree(y + 1);
        m_keys.row(y)[-1] = KeyFormat<Key>::kFar;
        return {m_planes.relief.row(y),
                m_planes.marker.row(y),
                m_planes.width(),
                m_sweeps.needed(y),
                words(),
                m_keys.row(y),
                m_floors.row(y)};
    }

    int levelOfFirstFree(int y) const {
        // The first row that needs keys may need them for free pixels below it.
        for (const int row : {y, std::min(y + 1, m_planes.height() - 1)}) {
            const unsigned char* marker = m_planes.marker.row(row);
            const unsigned char* end = marker + m_planes.width();
            const unsigned char* first = std::find(marker, end, 0);
            if (first != end) return m_planes.relief.row(row)[first - marker];
        }
        return -1;
    }

    template <class Prepare>
    bool converge(Prepare prepare, Key step) {
        return m_sweeps.converge(prepare, [&](const GroupRow& groups, int y, int neighbour) {
            return m_relax(groups, {keys(neighbour), m_keys.row(y), floors(y), step});
        });
    }

    FloodPlanes m_planes;
    const StepKeyRows<Key>& m_rows;
    int (*m_relax)(const GroupRow& groups, const KeyRow<Key>& row);
    GroupSweeps m_sweeps;
    StepPlane<Key> m_keys;
    StepPlane<Key> m_floors;
};

/// The labels of a plane whose keys are known.
class LabelSweeps {
public:
    LabelSweeps(const FloodPlanes& planes, bool sidesOnly, const StepLabelRows& rows,
                ScratchLayout& layout)
        : m_planes(planes),
          m_rows(rows),
          m_findSources(sidesOnly ? rows.findSources4 : rows.findSources8),
          m_relax(sidesOnly ? rows.relax4 : rows.relax8),
          m_sweeps(groupsOf(planes.width(), rows.lanes), planes.height(), sidesOnly ? 0 : 1,
                   kVisitsForLabels, layout),
          m_labels(strideOf(planes, rows), planes.height(), layout),
          m_sources(strideOf(planes, rows), planes.height(), layout) {}

    bool flood(const KeySweeps<std::int32_t>& keys) {
        m_sweeps.clear();
        const auto prepare = [&](int y) {
            unsigned char* sources = m_sources.row(y);
            std::fill_n(sources, m_sources.stride(), static_cast<unsigned char>(0));
            if (!m_findSources({keys.keys(y - 1), keys.keys(y), keys.keys(y + 1), keys.floors(y),
                                keys.free(y), keys.words(), sources}))
                return false;
            m_rows.findFree(sources, m_planes.width(), m_sweeps.free(y));
            m_rows.prepare(m_planes.marker.row(y), m_planes.width(), m_labels.row(y));
            return true;
        };
        const auto relax = [&](const GroupRow& groups, int y, int neighbour) {
            return m_relax(groups, {m_labels.row(neighbour), m_labels.row(y), m_sources.row(y),
                                    neighbour < y});
        };
        if (!m_sweeps.converge(prepare, relax)) return false;
        for (int y = 0; y < m_planes.height(); ++y)
            std::copy_n(m_labels.row(y), m_planes.width(), m_planes.marker.row(y));
        return true;
    }

private:
    static std::int64_t strideOf(const FloodPlanes& planes, const StepLabelRows& rows) {
        return std::int64_t{groupsOf(planes.width(), rows.lanes)} * rows.lanes;
    }

    FloodPlanes m_planes;
    const StepLabelRows& m_rows;
    bool (*m_findSources)(const SourceRow& row);
    int (*m_relax)(const GroupRow& groups, const LabelRow& row);
    GroupSweeps m_sweeps;
    StepPlane<unsigned char> m_labels;
    StepPlane<unsigned char> m_sources;
};

/// Calls sweep with the sweeps that make() lays out, if the scratch has room for them.
template <class Make, class Sweep>
bool sweepInScratch(unsigned char* scratch, int scratchSize, Make make, Sweep sweep) {
    ScratchLayout measured;
    make(measured);
    if (measured.used() > scratchSize) return false;
    ScratchLayout layout(scratch);
    return sweep(make(layout));
}

}  // namespace

bool floodByStepSweeps(const FloodPlanes& planes, bool sidesOnly, unsigned char* scratch,
                       int scratchSize) {
    TwoLevels outcome = TwoLevels::OtherRelief;
    const auto floodTwoLevels = [&](auto keys) {
        outcome = keys.floodTwoLevels();
        return outcome == TwoLevels::Done;
    };
    const auto makeNarrow = [&](ScratchLayout& layout) {
        return KeySweeps<std::uint16_t>(planes, sidesOnly, kKeyRows16.selected(), layout);
    };
    if (sweepInScratch(scratch, scratchSize, makeNarrow, floodTwoLevels)) return true;
    if (outcome == TwoLevels::Winding) return false;
    const auto makeWide = [&](ScratchLayout& layout) {
        return KeySweeps<std::int32_t>(planes, sidesOnly, kKeyRows32.selected(), layout);
    };
    if (outcome == TwoLevels::Long)
        return sweepInScratch(scratch, scratchSize, makeWide, floodTwoLevels);
    const auto makeBoth = [&](ScratchLayout& layout) {
        const auto keys = makeWide(layout);
        return std::pair(keys, LabelSweeps(planes, sidesOnly, kLabelRows.selected(), layout));
    };
    return sweepInScratch(scratch, scratchSize, makeBoth, [](auto both) {
        auto& [keys, labels] = both;
        return keys.sweep() && labels.flood(keys);
    });
}

}  // namespace numeric
