#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/labelling/label_rows.cpp"
#include "numeric/labelling/label_rows.h"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/base/neighbours.h"
#include "numeric/base/row_ends-inl.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using ByteTag = hn::ScalableTag<unsigned char>;
using Mask = BitWord;

constexpr Mask kLastBit = Mask{1} << (kWordBits - 1);

HWY_INLINE int popCount(Mask bits) {
    return static_cast<int>(hwy::PopCount(bits));
}

// Bit 0 to bit n.
HWY_INLINE Mask upTo(int n) {
    return (Mask{2} << n) - 1;
}

// Each pixel's left neighbour; the pixel before the word's first is the last of `before`.
HWY_INLINE Mask leftNeighbours(Mask word, Mask before) {
    return word << 1 | before >> (kWordBits - 1);
}

HWY_INLINE Mask maskOfBytes(const unsigned char* pixels) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    Mask bits = 0;
    for (int i = 0; i < kWordBits; i += lanes) {
        const auto isSet = hn::Ne(hn::LoadU(d, pixels + i), hn::Zero(d));
        bits |= toBits(d, isSet) << i;
    }
    return bits;
}

void maskRow(const unsigned char* row, int width, BitWord* mask) {
    unsigned char last[kWordBits];
    for (int x = 0; x < width; x += kWordBits)
        *mask++ = maskOfBytes(wholeBytes(row + x, width - x, 0, last));
}

int mergeMasks(const BitWord* firstRow, const BitWord* lastRow, int words, BitWord* strip) {
    int runs = 0;
    Mask before = 0;
    for (int i = 0; i < words; ++i) {
        const Mask bits = firstRow[i] | lastRow[i];
        runs += popCount(bits & ~leftNeighbours(bits, before));
        strip[i] = before = bits;
    }
    return runs;
}

// Calls store(i, position) for the set bits from the i-th on. Always in groups of kGroup / 2, more
// than there are bits if need be, for a branch on their number would be mispredicted half the time.
template <class Store>
HWY_INLINE void listBits(Mask bits, int count, Store store) {
    for (int i = 0; i < count; i += kGroup / 2)
        for (int j = 0; j < kGroup / 2; ++j) {
            store(i + j, static_cast<int>(hwy::Num0BitsBelowLS1Bit_Nonzero64(bits | kLastBit)));
            bits &= bits - 1;
        }
}

int findRuns(const BitWord* mask, int width, RunBounds* runs) {
    int* const bounds = &runs->start;
    int count = 0;
    Mask before = 0;
    for (int x = 0; x < width; x += kWordBits) {
        const Mask bits = *mask++;
        // A run starts or ends where a pixel differs from its left neighbour.
        const Mask edges = bits ^ leftNeighbours(bits, before);
        const int edgeCount = popCount(edges);
        listBits(edges, edgeCount, [=](int i, int bit) { bounds[count + i] = x + bit; });
        count += edgeCount;
        before = bits;
    }
    if (count % 2 != 0) bounds[count++] = width;
    return count / 2;
}

// Contacts are found 64 columns at a time on the masks of the two rows that meet, one column
// standing for each stretch of contact. The number of the run that holds a column is a count of run
// starts up to it. It is also right for the pixel left of the column: if that is set, no run starts
// at the column itself.
template <Neighbours kNeighbours>
int findContacts(const Strip& upperStrip, const Strip& lowerStrip, int words, Contact* contacts) {
    int count = 0;
    int upperRun = upperStrip.firstRun - 1;  // the last run that starts before the word
    int lowerRun = lowerStrip.firstRun - 1;
    Mask upperBefore = 0, upperRowBefore = 0;
    Mask lowerBefore = 0, lowerRowBefore = 0;
    for (int i = 0; i < words; ++i) {
        const Mask upperRow = upperStrip.lastRowMask[i];
        const Mask lowerRow = lowerStrip.firstRowMask[i];
        const Mask both = upperRow & lowerRow;
        Mask touching = both & ~leftNeighbours(both, upperRowBefore & lowerRowBefore);
        if (kNeighbours == Neighbours::Eight) {
            // A corner counts where no side does: one row's pixels end just before the other's.
            const Mask upperLeft = leftNeighbours(upperRow, upperRowBefore);
            const Mask lowerLeft = leftNeighbours(lowerRow, lowerRowBefore);
            touching |= (upperRow & ~upperLeft & ~lowerRow & lowerLeft) |
                        (lowerRow & ~lowerLeft & ~upperRow & upperLeft);
        }
        const Mask upper = upperStrip.mask[i];
        const Mask lower = lowerStrip.mask[i];
        const Mask upperStarts = upper & ~leftNeighbours(upper, upperBefore);
        const Mask lowerStarts = lower & ~leftNeighbours(lower, lowerBefore);
        const int touchCount = popCount(touching);
        listBits(touching, touchCount, [=](int j, int bit) {
            const Mask seen = upTo(bit);
            contacts[count + j] = {upperRun + popCount(upperStarts & seen),
                                   lowerRun + popCount(lowerStarts & seen)};
        });
        count += touchCount;
        upperRun += popCount(upperStarts);
        lowerRun += popCount(lowerStarts);
        upperBefore = upper;
        lowerBefore = lower;
        upperRowBefore = upperRow;
        lowerRowBefore = lowerRow;
    }
    return count;
}

void drawRuns(const RunBounds* runs, int count, const int* areaOfRun,
              const unsigned char* labelOfArea, unsigned char* line) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    for (int i = 0; i < count; ++i) {
        const auto labels = hn::Set(d, labelOfArea[areaOfRun[i]]);
        for (int x = runs[i].start; x < runs[i].end; x += lanes) hn::StoreU(labels, d, line + x);
    }
}

void replaceNonZero(const unsigned char* line, unsigned char* row, int width) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto zero = hn::Zero(d);
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto isZero = hn::Eq(hn::LoadU(d, row + x), zero);
        hn::StoreU(hn::IfThenElse(isZero, zero, hn::LoadU(d, line + x)), d, row + x);
    }
    for (; x < width; ++x)
        if (row[x] != 0) row[x] = line[x];
}

}  // namespace

constexpr LabelRows kRows = {maskRow,
                             mergeMasks,
                             findContacts<Neighbours::Four>,
                             findContacts<Neighbours::Eight>,
                             findRuns,
                             drawRuns,
                             replaceNonZero};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<LabelRows> kLabelBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
