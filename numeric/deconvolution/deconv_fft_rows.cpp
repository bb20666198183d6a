#include "numeric/deconvolution/deconv_fft_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/deconvolution/deconv_fft_rows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/base/transpose-inl.h"
#include "numeric/deconvolution/fft-inl.h"

// Two rows make one complex transform, and each lane has such a pair: no lane ever meets another
// one inside a transform, so that every vector length gives the same bits.
HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

constexpr int kStrip = 16;  // columns of one strip: a cache line of each row
constexpr int kQuadsPerBlock = HalfSpectrum::kBlockColumns / 4;

/// Brings the rows of a group into the cache while something else is computed, so many lines at a
/// step that the last step finishes them.
template <PrefetchFor kUse, class Float>
class RowsAhead {
public:
    /// rows: null if there are none.
    RowsAhead(Float* const* rows, int columns, int steps)
        : m_rows(rows), m_end(rows ? rows + kElementFloats : rows), m_columns(columns) {
        // A row that starts within a line reaches into one line more.
        const int linesPerRow = (columns + kLineFloats - 1) / kLineFloats + 1;
        m_linesPerStep = (linesPerRow * kElementFloats + steps - 1) / steps;
    }
    HWY_INLINE void step() {
        for (int i = 0; i < m_linesPerStep && m_rows != m_end; ++i) {
            prefetch<kUse>(*m_rows + m_column);
            m_column += kLineFloats;
            if (m_column < m_columns + kLineFloats) continue;
            m_column = 0;
            ++m_rows;
        }
    }

private:
    Float* const* m_rows;
    Float* const* m_end;
    int m_columns;
    int m_column = 0;
    int m_linesPerStep;
};

/// kLanes pixels of an extended row, which ends in zeros.
void copyExtended(const RowsIn& in, int row, int x, float* pixels) {
    const int sides = in.leftColumns + in.rightColumns;
    for (int i = 0; i < kLanes; ++i) {
        const int inRegion = x + i - in.leftColumns;
        const int side = inRegion < 0 ? x + i : x + i - in.columns;
        if (inRegion >= 0 && inRegion < in.columns)
            pixels[i] = in.rows[row][inRegion];
        else
            pixels[i] = side < sides ? in.sides[side * kElementFloats + row] : 0.0F;
    }
}

/// Columns x to x + kLanes - 1 of kLanes extended rows, as elements; part is the first of the rows
/// in RowsIn::rows.
HWY_INLINE void loadTile(const RowsIn& in, int part, int x, float* elements) {
    const Lanes d;
    const int inRegion = x - in.leftColumns;
    Vec tile[kLanes];
    if (inRegion >= in.columns + in.rightColumns) {
        HWY_UNROLL(16)
        for (int row = 0; row < kLanes; ++row) tile[row] = hn::Zero(d);
    } else if (inRegion >= 0 && inRegion + kLanes <= in.columns) {
        HWY_UNROLL(16)
        for (int row = 0; row < kLanes; ++row)
            tile[row] = hn::LoadU(d, in.rows[part + row] + inRegion);
    } else {
        HWY_ALIGN float pixels[kLanes * kLanes];
        for (int row = 0; row < kLanes; ++row)
            copyExtended(in, part + row, x, pixels + row * kLanes);
        HWY_UNROLL(16)
        for (int row = 0; row < kLanes; ++row) tile[row] = hn::Load(d, pixels + row * kLanes);
    }
    transposeSquare(tile);
    HWY_UNROLL(16)
    for (int i = 0; i < kLanes; ++i) hn::StoreU(tile[i], d, elements + i * kElementFloats);
}

HWY_INLINE void loadStrip(const RowsIn& in, int x, float* elements) {
    for (int i = 0; i < kStrip; i += kLanes, elements += kLanes * kElementFloats) {
        loadTile(in, 0, x + i, elements);
        loadTile(in, kLanes, x + i, elements + kLanes);
    }
}

/// The first pass over the rows, fused with turning them into lanes: a strip of columns for each
/// input of the butterflies, then the butterflies of the strip.
template <int kRadix>
void firstRowPass(const FftPlan& plan, const RowsIn& in, float* work) {
    const FftLevel& level = plan.levels[0];
    HWY_ALIGN float strips[kRadix * kStrip * kElementFloats];
    for (int j = 0; j < level.reach; j += kStrip) {
        for (int q = 0; q < kRadix; ++q)
            loadStrip(in, q * level.reach + j, strips + q * kStrip * kElementFloats);
        for (int i = 0; i < kStrip; ++i) {
            Complex x[kRadix];
            HWY_UNROLL(8)
            for (int q = 0; q < kRadix; ++q)
                x[q] = load(strips + (q * kStrip + i) * kElementFloats);
            dft<false>(x);
            storeTurned(x, level, j + i, work);
        }
    }
}

/// Columns x to x + kLanes - 1 of kLanes result rows, from elements.
HWY_INLINE void storeTile(const RowsOut& out, int part, int x, const float* elements) {
    const Lanes d;
    const Vec threshold = hn::Set(d, out.threshold);
    Vec tile[kLanes];
    HWY_UNROLL(16)
    for (int i = 0; i < kLanes; ++i) {
        const Vec value = hn::LoadU(d, elements + i * kElementFloats);
        tile[i] = hn::IfThenElseZero(hn::Gt(hn::Abs(value), threshold), value);
    }
    transposeSquare(tile);
    if (x + kLanes <= out.columns) {
        HWY_UNROLL(16)
        for (int row = 0; row < kLanes; ++row) hn::StoreU(tile[row], d, out.rows[part + row] + x);
        return;
    }
    for (int row = 0; row < kLanes; ++row) {
        HWY_ALIGN float pixels[kLanes];
        hn::Store(tile[row], d, pixels);
        for (int i = 0; x + i < out.columns; ++i) out.rows[part + row][x + i] = pixels[i];
    }
}

HWY_INLINE void storeStrip(const RowsOut& out, int x, const float* elements) {
    for (int i = 0; i < kStrip && x + i < out.columns; i += kLanes) {
        storeTile(out, 0, x + i, elements);
        storeTile(out, kLanes, x + i, elements + kLanes);
        elements += kLanes * kElementFloats;
    }
}

/// Undoes firstRowPass; the results go to the columns of the region.
template <int kRadix>
void lastRowPass(const FftPlan& plan, const float* work, const RowsOut& out) {
    const FftLevel& level = plan.levels[0];
    HWY_ALIGN float strips[kRadix * kStrip * kElementFloats];
    for (int j = 0; j < level.reach; j += kStrip) {
        for (int i = 0; i < kStrip; ++i) {
            Complex x[kRadix];
            loadTurned(work, level, j + i, x);
            dft<false>(x);
            HWY_UNROLL(8)
            for (int q = 0; q < kRadix; ++q)
                store(exchanged(x[q]), strips + (q * kStrip + i) * kElementFloats);
        }
        for (int q = 0; q < kRadix; ++q)
            storeStrip(out, q * level.reach + j, strips + q * kStrip * kElementFloats);
    }
}

// The first passes for radix 2, 4 and 8, indexed by radix / 4.
constexpr decltype(&firstRowPass<8>) kFirstRowPass[] = {firstRowPass<2>, firstRowPass<4>,
                                                        firstRowPass<8>};
constexpr decltype(&lastRowPass<8>) kLastRowPass[] = {lastRowPass<2>, lastRowPass<4>,
                                                      lastRowPass<8>};

void forwardBelow(const FftPlan& plan, int level, float* block) {
    forwardPass(plan.levels[level], block);
    if (level + 1 == plan.levelCount) return;
    const int stride = plan.levels[level].stride * kElementFloats;
    for (int q = 0; q < 8; ++q) forwardBelow(plan, level + 1, block + q * stride);
}

void inverseBelow(const FftPlan& plan, int level, float* block) {
    if (level + 1 < plan.levelCount) {
        const int stride = plan.levels[level].stride * kElementFloats;
        for (int q = 0; q < 8; ++q) inverseBelow(plan, level + 1, block + q * stride);
    }
    inversePass(plan.levels[level], block);
}

/// Calls step(level, block) for the transforms of the passes between the first and the last.
template <class Step>
HWY_INLINE void forEachSubTransform(const FftPlan& plan, float* work, Step step) {
    const FftLevel& first = plan.levels[0];
    for (int q = 0; q < first.radix; ++q) step(plan, 1, work + q * first.stride * kElementFloats);
}

/// The spectra of two real rows, twice their value.
struct RowPair {
    Complex even;
    Complex odd;
};

/// From the spectrum z of even + i odd at a frequency and at its negative.
HWY_INLINE RowPair separate(Complex z, Complex negative) {
    return {{hn::Add(z.re, negative.re), hn::Sub(z.im, negative.im)},
            {hn::Add(z.im, negative.im), hn::Sub(negative.re, z.re)}};
}

HWY_INLINE Complex join(RowPair pair) {
    return {hn::Sub(pair.even.re, pair.odd.im), hn::Add(pair.even.im, pair.odd.re)};
}

HWY_INLINE Complex joinNegative(RowPair pair) {
    return {hn::Add(pair.even.re, pair.odd.im), hn::Sub(pair.odd.re, pair.even.im)};
}

/// Where the rows of a group lie in the blocks of the half spectrum.
struct SpectrumRows {
    std::int64_t blockFloats;
    std::int64_t first;

    SpectrumRows(const FftPlan& plan, int firstRow)
        : blockFloats(HalfSpectrum{plan.length}.blockFloats()),
          first(std::int64_t{HalfSpectrum::kRowFloats} * firstRow) {}
    std::int64_t ofQuad(int quad) const {
        return quad / kQuadsPerBlock * blockFloats + first + quad % kQuadsPerBlock * 4;
    }
    /// The group's rows of the block after the next are fetched while those of this one are at
    /// work, a part of them with each of the block's quads.
    HWY_INLINE void prefetchAhead(const float* spectrum, int quad) const {
        constexpr int kFloats = kElementFloats * HalfSpectrum::kRowFloats / kQuadsPerBlock;
        const float* at = spectrum + (quad / kQuadsPerBlock + 2) * blockFloats + first +
                          quad % kQuadsPerBlock * kFloats;
        for (int i = 0; i < kFloats; i += kLineFloats) prefetch<PrefetchFor::Reading>(at + i);
    }
};

/// Four columns of the group's rows to their place in the half spectrum.
HWY_INLINE void storeQuad(const RowPair (&pairs)[4], float* at) {
    constexpr int kRow = HalfSpectrum::kRowFloats;
    constexpr int kIm = HalfSpectrum::kBlockColumns;
    storeColumns({pairs[0].even.re, pairs[1].even.re, pairs[2].even.re, pairs[3].even.re}, at,
                 2 * kRow);
    storeColumns({pairs[0].even.im, pairs[1].even.im, pairs[2].even.im, pairs[3].even.im}, at + kIm,
                 2 * kRow);
    storeColumns({pairs[0].odd.re, pairs[1].odd.re, pairs[2].odd.re, pairs[3].odd.re}, at + kRow,
                 2 * kRow);
    storeColumns({pairs[0].odd.im, pairs[1].odd.im, pairs[2].odd.im, pairs[3].odd.im},
                 at + kRow + kIm, 2 * kRow);
}

HWY_INLINE void loadQuad(const float* at, RowPair (&pairs)[4]) {
    constexpr int kRow = HalfSpectrum::kRowFloats;
    constexpr int kIm = HalfSpectrum::kBlockColumns;
    Vec columns[4];
    loadColumns(at, 2 * kRow, columns);
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) pairs[s].even.re = columns[s];
    loadColumns(at + kIm, 2 * kRow, columns);
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) pairs[s].even.im = columns[s];
    loadColumns(at + kRow, 2 * kRow, columns);
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) pairs[s].odd.re = columns[s];
    loadColumns(at + kRow + kIm, 2 * kRow, columns);
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) pairs[s].odd.im = columns[s];
}

/// Column N/2 of the group's rows; both rows' values are real.
void storeMiddle(Complex z, float* at) {
    HWY_ALIGN float even[kLanes];
    HWY_ALIGN float odd[kLanes];
    const RowPair pair = separate(z, z);
    hn::Store(pair.even.re, Lanes(), even);
    hn::Store(pair.odd.re, Lanes(), odd);
    for (int i = 0; i < kLanes; ++i) {
        float* evenRow = at + 2 * i * HalfSpectrum::kRowFloats;
        float* oddRow = evenRow + HalfSpectrum::kRowFloats;
        evenRow[0] = even[i];
        oddRow[0] = odd[i];
        evenRow[HalfSpectrum::kBlockColumns] = oddRow[HalfSpectrum::kBlockColumns] = 0;
    }
}

RowPair loadMiddle(const float* at) {
    HWY_ALIGN float even[kLanes];
    HWY_ALIGN float odd[kLanes];
    for (int i = 0; i < kLanes; ++i) {
        even[i] = at[2 * i * HalfSpectrum::kRowFloats];
        odd[i] = at[(2 * i + 1) * HalfSpectrum::kRowFloats];
    }
    const Vec none = hn::Zero(Lanes());
    return {{hn::Load(Lanes(), even), none}, {hn::Load(Lanes(), odd), none}};
}

void forwardRows(const FftPlan& plan, const RowsIn& in, float* work, float* spectrum,
                 int firstRow) {
    kFirstRowPass[plan.levels[0].radix / 4](plan, in, work);
    forEachSubTransform(plan, work, forwardBelow);

    const SpectrumRows rows(plan, firstRow);
    Complex x[4];
    Complex y[4];
    RowPair pairs[4];

    loadGroup(work + plan.quads[0].group * kElementFloats, x);
    loadGroup(work + plan.quads[0].counterpart * kElementFloats, y);
    dft<false>(x);
    dft<false>(y);
    pairs[0] = separate(x[0], x[0]);
    pairs[1] = separate(x[1], x[3]);
    pairs[2] = separate(y[0], y[3]);
    pairs[3] = separate(y[1], y[2]);
    storeQuad(pairs, spectrum + rows.ofQuad(0));
    storeMiddle(x[2], spectrum + rows.ofQuad(plan.quadCount()));

    RowsAhead<PrefetchFor::Reading, const float> ahead(in.next, in.columns, plan.quadCount() - 1);
    for (int quad = 1; quad < plan.quadCount(); ++quad) {
        ahead.step();
        loadGroup(work + plan.quads[quad].group * kElementFloats, x);
        loadGroup(work + plan.quads[quad].counterpart * kElementFloats, y);
        dft<false>(x);
        dft<false>(y);
        HWY_UNROLL(4)
        for (int s = 0; s < 4; ++s) pairs[s] = separate(x[s], y[3 - s]);
        storeQuad(pairs, spectrum + rows.ofQuad(quad));
        rows.prefetchAhead(spectrum, quad);
    }
}

void inverseRows(const FftPlan& plan, const float* spectrum, int firstRow, float* work,
                 const RowsOut& out) {
    const SpectrumRows rows(plan, firstRow);
    Complex x[4];
    Complex y[4];
    RowPair pairs[4];

    loadQuad(spectrum + rows.ofQuad(0), pairs);
    const RowPair middle = loadMiddle(spectrum + rows.ofQuad(plan.quadCount()));
    // The frequencies 0 and N/2 of real rows are real; what the filter left besides is rounding.
    pairs[0].even.im = pairs[0].odd.im = hn::Zero(Lanes());
    x[0] = exchanged(join(pairs[0]));
    x[1] = exchanged(join(pairs[1]));
    x[2] = exchanged(join(middle));
    x[3] = exchanged(joinNegative(pairs[1]));
    y[0] = exchanged(join(pairs[2]));
    y[1] = exchanged(join(pairs[3]));
    y[2] = exchanged(joinNegative(pairs[3]));
    y[3] = exchanged(joinNegative(pairs[2]));
    dft<false>(x);
    dft<false>(y);
    storeGroupExchanged(x, work + plan.quads[0].group * kElementFloats);
    storeGroupExchanged(y, work + plan.quads[0].counterpart * kElementFloats);

    RowsAhead<PrefetchFor::Writing, float> ahead(out.rows, out.columns, plan.quadCount() - 1);
    for (int quad = 1; quad < plan.quadCount(); ++quad) {
        ahead.step();
        loadQuad(spectrum + rows.ofQuad(quad), pairs);
        rows.prefetchAhead(spectrum, quad);
        HWY_UNROLL(4)
        for (int s = 0; s < 4; ++s) {
            x[s] = exchanged(join(pairs[s]));
            y[3 - s] = exchanged(joinNegative(pairs[s]));
        }
        dft<false>(x);
        dft<false>(y);
        storeGroupExchanged(x, work + plan.quads[quad].group * kElementFloats);
        storeGroupExchanged(y, work + plan.quads[quad].counterpart * kElementFloats);
    }

    forEachSubTransform(plan, work, inverseBelow);
    kLastRowPass[plan.levels[0].radix / 4](plan, work, out);
}

}  // namespace

constexpr DeconvFFTRows kRows = {kLanes, forwardRows, inverseRows};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<DeconvFFTRows> kDeconvFFTRowBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
