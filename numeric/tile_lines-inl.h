// Lines of a tile's keys and what arrives from one to the next, for one target at a time.

#if defined(NUMERIC_TILE_LINES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_TILE_LINES_INL_H_
#undef NUMERIC_TILE_LINES_INL_H_
#else
#define NUMERIC_TILE_LINES_INL_H_
#endif

#include "hwy/highway.h"
#include "numeric/arrival.h"
#include "numeric/lanes-inl.h"
#include "numeric/tile_rows.h"

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
HWY_INLINE Line shiftedUp(const Line& line, TileKey start);
/// Each pixel's neighbour behind it; the last one's is `end`.
HWY_INLINE Line shiftedDown(const Line& line, TileKey end);

#if HWY_TARGET <= HWY_AVX3

static_assert(kParts == 1);

/// Advances after the source for each lead, two to an entry: the one for the odd lead in the low
/// byte.
struct alignas(64) AdvancePairs {
    std::uint16_t entries[64];
    constexpr AdvancePairs() : entries{} {
        for (int lead = 0; lead <= kLargestLead; ++lead) {
            const int fromCorner = lead > kLargestLeadOfSide ? lead : 0;
            const int advance = kAdvances[static_cast<std::size_t>(lead)] + fromCorner;
            entries[lead / 2] =
                static_cast<std::uint16_t>(entries[lead / 2] | advance << (lead % 2 == 0 ? 8 : 0));
        }
    }
};
constexpr AdvancePairs kAdvancePairs;

HWY_INLINE Line shiftedUp(const Line& line, TileKey start) {
    return {{Keys{_mm512_alignr_epi32(line.parts[0].raw, _mm512_set1_epi32(start), kLanes - 1)}}};
}

HWY_INLINE Line shiftedDown(const Line& line, TileKey end) {
    return {{Keys{_mm512_alignr_epi32(_mm512_set1_epi32(end), line.parts[0].raw, 1)}}};
}

/// What arrives later than its source by, for leads of 0 to kLargestLead; both are shifted by
/// kTileLabelBits, the lead with any bits below.
HWY_INLINE Keys advanceAfterSource(Keys lead) {
    const auto entry = _mm512_srli_epi32(lead.raw, kTileLabelBits + 1);
    const auto pair = _mm512_permutex2var_epi16(_mm512_load_si512(kAdvancePairs.entries), entry,
                                                _mm512_load_si512(kAdvancePairs.entries + 32));
    const auto oddShift = _mm512_and_si512(_mm512_srli_epi32(lead.raw, 5), _mm512_set1_epi32(8));
    return hn::And(Keys{_mm512_sllv_epi32(pair, oddShift)}, hn::Set(KeyTag(), 0xFF00));
}

/// The smaller of both but where the key is a wall.
HWY_INLINE Keys loweredKey(Keys key, Keys arriving) {
    const auto isPixel = _mm512_cmpneq_epi32_mask(key.raw, _mm512_set1_epi32(kWallKey));
    return Keys{_mm512_mask_min_epi32(key.raw, isPixel, key.raw, arriving.raw)};
}

#else

HWY_INLINE Line shiftedUp(const Line& line, TileKey start) {
    TileKey padded[1 + kTileSide];
    padded[0] = start;
    storeLine(line, padded + 1);
    return loadLine(padded);
}

HWY_INLINE Line shiftedDown(const Line& line, TileKey end) {
    TileKey padded[kTileSide + 1];
    storeLine(line, padded);
    padded[kTileSide] = end;
    return loadLine(padded + 1);
}

HWY_INLINE Keys advanceAfterSource(Keys lead) {
    const KeyTag d;
    const Lanes df;
    const auto units = hn::ShiftRight<kTileLabelBits>(lead);
    // Exact but for the root, which is too far from any half to be rounded the wrong way.
    const auto leadFloat = hn::ConvertTo(df, units);
    const auto square = hn::Sub(hn::Set(df, static_cast<float>(kSideDistance * kSideDistance)),
                                hn::Mul(leadFloat, leadFloat));
    const auto isOfCorner = hn::Gt(units, hn::Set(d, kLargestLeadOfSide));
    const auto advance =
        hn::Add(hn::NearestInt(hn::Sqrt(square)), hn::IfThenElseZero(isOfCorner, units));
    return hn::ShiftLeft<kTileLabelBits>(advance);
}

HWY_INLINE Keys loweredKey(Keys key, Keys arriving) {
    const auto isWall = hn::Eq(key, hn::Set(KeyTag(), kWallKey));
    return hn::IfThenElse(isWall, key, hn::Min(key, arriving));
}

#endif

HWY_INLINE Line smallerBeside(const Line& line, TileKey start, TileKey end) {
    return smaller(shiftedUp(line, start), shiftedDown(line, end));
}

HWY_INLINE Keys arrive(Keys side, Keys corner) {
    const KeyTag d;
    constexpr TileKey kLargest = (kLargestLead << kTileLabelBits) + kTileLabelMask;
    // With the largest label the difference of the keys has that of the distances in its upper
    // bits, whatever the corner's label.
    const auto lead = hn::Sub(hn::Or(side, hn::Set(d, kTileLabelMask)), corner);
    const auto isOfCorner =
        hn::Gt(lead, hn::Set(d, (kLargestLeadOfSide << kTileLabelBits) + kTileLabelMask));
    // The label stays in the lower bits of whichever the ray comes from.
    const auto source = hn::IfThenElse(isOfCorner, corner, side);
    const auto usedLead = hn::Min(hn::Max(lead, hn::Zero(d)), hn::Set(d, kLargest));
    return hn::Add(source, advanceAfterSource(usedLead));
}

/// What arrives over a line's pixels and the smaller of the corners beside them.
HWY_INLINE Line arrive(const Line& side, const Line& corner) {
    return makeLine([&](int i) { return arrive(side.parts[i], corner.parts[i]); });
}

/// The line lowered to what arrives over a neighbour.
HWY_INLINE Line lowered(const Line& line, const Line& side, const Line& corner) {
    return makeLine(
        [&](int i) { return loweredKey(line.parts[i], arrive(side.parts[i], corner.parts[i])); });
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
