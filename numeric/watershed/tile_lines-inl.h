// Lines of a tile's keys and what arrives from one to the next, for one target at a time.

#if defined(NUMERIC_TILE_LINES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_TILE_LINES_INL_H_
#undef NUMERIC_TILE_LINES_INL_H_
#else
#define NUMERIC_TILE_LINES_INL_H_
#endif

#include "hwy/highway.h"
#include "numeric/base/lanes-inl.h"
#include "numeric/base/neighbours.h"
#include "numeric/watershed/arrival.h"
#include "numeric/watershed/lane_shift-inl.h"
#include "numeric/watershed/tile_rows.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

using KeyTag = hn::RebindToSigned<Lanes>;
using Keys = hn::Vec<KeyTag>;
static_assert(kTileSide % kLanes == 0, "a line is whole vectors");
constexpr int kParts = kTileSide / kLanes;

constexpr TileKey kTileLabelMask = (1 << kTileLabelBits) - 1;

/// One row or column of a tile.
struct Line {
    Keys parts[kParts];
};

template <class Function>
HWY_INLINE Line makeLine(const Function& part) {
    Line line;
    HWY_UNROLL(kParts)
    for (int i = 0; i < kParts; ++i) line.parts[i] = part(i);
    return line;
}

HWY_INLINE Line loadLine(const TileKey* keys) {
    return makeLine([&](int i) { return hn::LoadU(KeyTag(), keys + i * kLanes); });
}

HWY_INLINE void storeLine(const Line& line, TileKey* keys) {
    HWY_UNROLL(kParts)
    for (int i = 0; i < kParts; ++i) hn::StoreU(line.parts[i], KeyTag(), keys + i * kLanes);
}

HWY_INLINE Line zeroLine() {
    return makeLine([](int) { return hn::Zero(KeyTag()); });
}

HWY_INLINE bool isZero(const Line& line) {
    auto all = line.parts[0];
    HWY_UNROLL(kParts)
    for (int i = 1; i < kParts; ++i) all = hn::Or(all, line.parts[i]);
    return hn::AllTrue(KeyTag(), hn::Eq(all, hn::Zero(KeyTag())));
}

HWY_INLINE Line smaller(const Line& a, const Line& b) {
    return makeLine([&](int i) { return hn::Min(a.parts[i], b.parts[i]); });
}

HWY_INLINE TileKey smallestOf(const Line& line) {
    auto smallest = line.parts[0];
    for (int i = 1; i < kParts; ++i) smallest = hn::Min(smallest, line.parts[i]);
    return hn::GetLane(hn::MinOfLanes(KeyTag(), smallest));
}

HWY_INLINE TileKey largestOf(const Line& line) {
    auto largest = line.parts[0];
    for (int i = 1; i < kParts; ++i) largest = hn::Max(largest, line.parts[i]);
    return hn::GetLane(hn::MaxOfLanes(KeyTag(), largest));
}

/// Adds to *changes what differs between two lines.
HWY_INLINE void markChanges(const Line& a, const Line& b, Line* changes) {
    HWY_UNROLL(kParts)
    for (int i = 0; i < kParts; ++i)
        changes->parts[i] = hn::Or(changes->parts[i], hn::Xor(a.parts[i], b.parts[i]));
}

/// Each pixel's neighbour before it along the line; the first one's is `start`.
HWY_INLINE Line shiftedUp(const Line& line, TileKey start) {
    return makeLine([&](int i) {
        const KeyTag d;
        return lanesUp<1>(d, line.parts[i], i == 0 ? hn::Set(d, start) : line.parts[i - 1]);
    });
}

/// Each pixel's neighbour past it; the last one's is `end`.
HWY_INLINE Line shiftedDown(const Line& line, TileKey end) {
    return makeLine([&](int i) {
        const KeyTag d;
        return lanesDown<1>(d, line.parts[i],
                            i == kParts - 1 ? hn::Set(d, end) : line.parts[i + 1]);
    });
}

#if HWY_TARGET <= HWY_AVX3

static_assert(kParts == 1);

/// The smallest lead at which the label is the corner's.
constexpr int kCornerLead = kLargestLeadOfSide + 1;

/// Advances, shifted by kTileLabelBits, in tables of 64 entries: one after the side for leads of 1
/// to 64, one after the corner, less kCornerLead, for larger leads. The index is the lead less
/// kCornerLead, of which the processor takes the lower 6 bits.
struct alignas(64) AdvanceTables {
    std::uint16_t afterSide[64];
    std::uint16_t afterCorner[64];
    constexpr AdvanceTables() : afterSide{}, afterCorner{} {
        for (int lead = 1; lead <= kLargestLead; ++lead) {
            const int advance = kAdvances[static_cast<std::size_t>(lead)];
            const int index = (lead - kCornerLead) & 63;
            if (lead < kCornerLead)
                afterSide[index] = static_cast<std::uint16_t>(advance << kTileLabelBits);
            else
                afterCorner[index] =
                    static_cast<std::uint16_t>((lead - kCornerLead + advance) << kTileLabelBits);
        }
    }
};
constexpr AdvanceTables kAdvanceTables;
static_assert(kCornerLead == 65 && kLargestLead - kCornerLead < 64, "one entry for each lead");
static_assert(kAdvances[0] == kAdvances[1], "a lead of 0 counts as 1");

/// The Euclidean order: what arrives over a side neighbour and the earlier of the corners beside
/// it.
struct Marching {
    static constexpr Neighbours kNeighbours = Neighbours::Eight;
    static constexpr int kPixelsPerRound = 10;
    static bool isLong(double width, double pixelsOfSeed) { return width < pixelsOfSeed / 3000; }
    static HWY_INLINE Keys arrive(Keys side, Keys corner) {
        // With the largest label the difference of the keys has that of the distances in its upper
        // bits, whatever the corner's label.
        const auto labelMask = _mm512_set1_epi32(kTileLabelMask);
        const auto lateCorner =
            _mm512_add_epi32(corner.raw, _mm512_set1_epi32(kCornerLead << kTileLabelBits));
        const auto lead = _mm512_sub_epi32(_mm512_or_si512(side.raw, labelMask), lateCorner);
        const auto isOfSide = _mm512_movepi32_mask(lead);
        constexpr int kLargest = ((kLargestLead - kCornerLead) << kTileLabelBits) + kTileLabelMask;
        constexpr int kSmallest = -(64 << kTileLabelBits);
        const auto index =
            _mm512_srai_epi32(_mm512_min_epi32(_mm512_max_epi32(lead, _mm512_set1_epi32(kSmallest)),
                                               _mm512_set1_epi32(kLargest)),
                              kTileLabelBits);
        constexpr __mmask32 kLowerHalves = 0x55555555;
        const auto advance = [&](const std::uint16_t(&table)[64]) {
            return _mm512_maskz_permutex2var_epi16(kLowerHalves, _mm512_load_si512(table), index,
                                                   _mm512_load_si512(table + 32));
        };
        const auto fromCorner = _mm512_add_epi32(lateCorner, advance(kAdvanceTables.afterCorner));
        return Keys{_mm512_mask_add_epi32(fromCorner, isOfSide, side.raw,
                                          advance(kAdvanceTables.afterSide))};
    }
};

/// The smaller of both but where the key is a wall.
HWY_INLINE Keys loweredKey(Keys key, Keys arriving) {
    const auto isPixel = _mm512_cmpneq_epi32_mask(key.raw, _mm512_set1_epi32(kWallKey));
    return Keys{_mm512_mask_min_epi32(key.raw, isPixel, key.raw, arriving.raw)};
}

#else

struct Marching {
    static constexpr Neighbours kNeighbours = Neighbours::Eight;
    static constexpr int kPixelsPerRound = 10;
    static bool isLong(double width, double pixelsOfSeed) { return width < pixelsOfSeed / 3000; }
    static HWY_INLINE Keys arrive(Keys side, Keys corner) {
        const KeyTag d;
        const Lanes df;
        const auto lead =
            hn::Sub(hn::ShiftRight<kTileLabelBits>(side), hn::ShiftRight<kTileLabelBits>(corner));
        const auto usedLead = hn::Min(hn::Max(lead, hn::Zero(d)), hn::Set(d, kLargestLead));
        // Exact but for the root, which is too far from any half to be rounded the wrong way.
        const auto leadFloat = hn::ConvertTo(df, usedLead);
        const auto square = hn::Sub(hn::Set(df, static_cast<float>(kSideDistance * kSideDistance)),
                                    hn::Mul(leadFloat, leadFloat));
        const auto advance = hn::NearestInt(hn::Sqrt(square));
        // The label stays in the lower bits of whichever the ray comes from.
        const auto isOfCorner = hn::Gt(lead, hn::Set(d, kLargestLeadOfSide));
        const auto source = hn::IfThenElse(isOfCorner, corner, side);
        const auto later = hn::Add(advance, hn::IfThenElseZero(isOfCorner, usedLead));
        return hn::Add(source, hn::ShiftLeft<kTileLabelBits>(later));
    }
};

HWY_INLINE Keys loweredKey(Keys key, Keys arriving) {
    const auto isWall = hn::Eq(key, hn::Set(KeyTag(), kWallKey));
    return hn::IfThenElse(isWall, key, hn::Min(key, arriving));
}

#endif

/// The orders by steps: one more than the smallest of the neighbours.
template <Neighbours kStepsTo>
struct Stepping {
    static constexpr Neighbours kNeighbours = kStepsTo;
    static constexpr int kPixelsPerRound = 16;
    static bool isLong(double width, double pixelsOfSeed) {
        return width * width * width * width < 3 * pixelsOfSeed;
    }
    static HWY_INLINE Keys arrive(Keys side, Keys corner) {
        const auto nearest = kNeighbours == Neighbours::Eight ? hn::Min(side, corner) : side;
        return hn::Add(nearest, hn::Set(KeyTag(), 1 << kTileLabelBits));
    }
};

HWY_INLINE Line smallerBeside(const Line& line, TileKey start, TileKey end) {
    return smaller(shiftedUp(line, start), shiftedDown(line, end));
}

/// What arrives over a line's pixels and the smaller of the corners beside them.
template <class Order>
HWY_INLINE Line arrive(const Line& side, const Line& corner) {
    return makeLine([&](int i) { return Order::arrive(side.parts[i], corner.parts[i]); });
}

/// The line lowered to what arrives over a neighbour.
template <class Order>
HWY_INLINE Line lowered(const Line& line, const Line& side, const Line& corner) {
    const Line arriving = arrive<Order>(side, corner);
    return makeLine([&](int i) { return loweredKey(line.parts[i], arriving.parts[i]); });
}

/// The line with its free pixels replaced by what arrives. Keeps the longest distances.
HWY_INLINE Line replaced(const Line& line, const Line& arriving, Line* longest) {
    return makeLine([&](int i) {
        const KeyTag d;
        const auto key = line.parts[i];
        const auto unreached = hn::Set(d, kUnreachedKey);
        const auto isSeed = hn::Lt(key, hn::Set(d, 1 << kTileLabelBits));
        const auto isKept = hn::Or(isSeed, hn::Eq(key, hn::Set(d, kWallKey)));
        const auto result = hn::IfThenElse(isKept, key, hn::Min(arriving.parts[i], unreached));
        const auto isReached = hn::Lt(result, unreached);
        longest->parts[i] = hn::Max(longest->parts[i], hn::IfThenElseZero(isReached, result));
        return result;
    });
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#endif
