#include "numeric/deconv_fft_rows.h"

#include <algorithm>

#include "hwy/cache_control.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/deconv_fft_rows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/fft-inl.h"
#include "numeric/transpose-inl.h"

// Rows are transformed with a row pair in each lane, columns with a column in each lane, so that
// no lane ever meets another one inside a transform, and every vector length gives the same bits.
HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

constexpr int kPiece = 4;   // columns that are transposed at a time
constexpr int kStrip = 16;  // columns of one strip: a cache line of each row

/// Rows on their way to the cache while something else is computed, a few lines at a time.
template <int kWrite, class Float>
class RowsAhead {
public:
    RowsAhead(Float* const* rows, int columns, int steps)
        : m_rows(rows), m_end(rows + (rows ? kElementFloats : 0)), m_columns(columns) {
        const int lines = (columns + kLineFloats - 1) / kLineFloats + 1;
        m_linesPerStep = (lines * kElementFloats + steps - 1) / steps;
    }
    HWY_INLINE void step() {
        for (int i = 0; i < m_linesPerStep && m_rows != m_end; ++i) {
            __builtin_prefetch(*m_rows + m_column, kWrite, 2);
            m_column += kLineFloats;
            if (m_column >= m_columns + kLineFloats) {
                m_column = 0;
                ++m_rows;
            }
        }
    }

private:
    static constexpr int kLineFloats = 16;
    Float* const* m_rows;
    Float* const* m_end;
    int m_columns;
    int m_column = 0;
    int m_linesPerStep;
};

// --- Rows ---------------------------------------------------------------------------------------

/// kLanes pixels of an extended row, which ends in zeros.
void copyExtended(const RowsIn& in, int row, int x, float* pixels) {
    const int region = in.leftColumns - x;  // where the region's pixels begin, seen from x
    const int begin = std::clamp(region, 0, kLanes);
    const int end = std::clamp(region + in.columns, 0, kLanes);
    const int sides = in.leftColumns + in.rightColumns;
    const auto side = [&](int column) {
        return column < sides ? in.sides[column * kElementFloats + row] : 0.0F;
    };
    for (int i = 0; i < begin; ++i) pixels[i] = side(x + i);
    if (begin < end) std::copy_n(in.rows[row] + begin - region, end - begin, pixels + begin);
    for (int i = std::max(begin, end); i < kLanes; ++i) pixels[i] = side(x + i - in.columns);
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
        for (int row = 0; row < kLanes; ++row) {
            tile[row] = hn::LoadU(d, in.rows[part + row] + inRegion);
        }
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
        for (int row = 0; row < kLanes; ++row) {
            hn::StoreU(tile[row], d, out.rows[part + row] + x);
        }
        return;
    }
    for (int row = 0; row < kLanes; ++row) {
        HWY_ALIGN float pixels[kLanes];
        hn::Store(tile[row], d, pixels);
        std::copy_n(pixels, out.columns - x, out.rows[part + row] + x);
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
        for (int q = 0; q < kRadix; ++q) {
            storeStrip(out, q * level.reach + j, strips + q * kStrip * kElementFloats);
        }
    }
}

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

HWY_INLINE void loadGroup(const float* at, Complex (&x)[4]) {
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) x[s] = load(at + s * kElementFloats);
}

HWY_INLINE void storeGroup(const Complex (&x)[4], float* at) {
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) store(exchanged(x[s]), at + s * kElementFloats);
}

/// Where the rows of a group lie in the blocks of the half spectrum.
struct SpectrumRows {
    std::int64_t blockFloats;
    std::int64_t first;

    SpectrumRows(const FftPlan& plan, int firstRow)
        : blockFloats(HalfSpectrum{plan.length}.blockFloats()),
          first(std::int64_t{HalfSpectrum::kRowFloats} * firstRow) {}
    std::int64_t ofQuad(int quad) const {
        constexpr int kQuadsPerBlock = HalfSpectrum::kBlockColumns / kPiece;
        return quad / kQuadsPerBlock * blockFloats + first + quad % kQuadsPerBlock * kPiece;
    }
    std::int64_t ofAhead(int quad) const {
        constexpr int kQuadsPerBlock = HalfSpectrum::kBlockColumns / kPiece;
        return (quad / kQuadsPerBlock + 1) * blockFloats + first +
               quad % kQuadsPerBlock * kElementFloats * 16;
    }
};

HWY_INLINE void prefetchQuad(const float* at) {
    constexpr int kLineFloats = 16;
    const int lines = kElementFloats;
    for (int i = 0; i < lines; ++i) hwy::Prefetch(at + i * kLineFloats);
}

/// Four columns of the group's rows to their place in the half spectrum.
HWY_INLINE void storeQuad(const RowPair (&pairs)[kPiece], float* at) {
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

HWY_INLINE void loadQuad(const float* at, RowPair (&pairs)[kPiece]) {
    constexpr int kRow = HalfSpectrum::kRowFloats;
    constexpr int kIm = HalfSpectrum::kBlockColumns;
    Vec columns[kPiece];
    loadColumns(at, 2 * kRow, columns);
    HWY_UNROLL(4)
    for (int s = 0; s < kPiece; ++s) pairs[s].even.re = columns[s];
    loadColumns(at + kIm, 2 * kRow, columns);
    HWY_UNROLL(4)
    for (int s = 0; s < kPiece; ++s) pairs[s].even.im = columns[s];
    loadColumns(at + kRow, 2 * kRow, columns);
    HWY_UNROLL(4)
    for (int s = 0; s < kPiece; ++s) pairs[s].odd.re = columns[s];
    loadColumns(at + kRow + kIm, 2 * kRow, columns);
    HWY_UNROLL(4)
    for (int s = 0; s < kPiece; ++s) pairs[s].odd.im = columns[s];
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
    switch (plan.levels[0].radix) {
        case 2:
            firstRowPass<2>(plan, in, work);
            break;
        case 4:
            firstRowPass<4>(plan, in, work);
            break;
        default:
            firstRowPass<8>(plan, in, work);
            break;
    }
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

    RowsAhead<0, const float> ahead(in.next, in.columns, plan.quadCount() - 1);
    for (int quad = 1; quad < plan.quadCount(); ++quad) {
        ahead.step();
        loadGroup(work + plan.quads[quad].group * kElementFloats, x);
        loadGroup(work + plan.quads[quad].counterpart * kElementFloats, y);
        dft<false>(x);
        dft<false>(y);
        HWY_UNROLL(4)
        for (int s = 0; s < 4; ++s) pairs[s] = separate(x[s], y[3 - s]);
        storeQuad(pairs, spectrum + rows.ofQuad(quad));
        prefetchQuad(spectrum + rows.ofAhead(quad));
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
    storeGroup(x, work + plan.quads[0].group * kElementFloats);
    storeGroup(y, work + plan.quads[0].counterpart * kElementFloats);

    RowsAhead<1, float> ahead(out.rows, out.columns, plan.quadCount() - 1);
    for (int quad = 1; quad < plan.quadCount(); ++quad) {
        ahead.step();
        loadQuad(spectrum + rows.ofQuad(quad), pairs);
        prefetchQuad(spectrum + rows.ofAhead(quad));
        HWY_UNROLL(4)
        for (int s = 0; s < 4; ++s) {
            x[s] = exchanged(join(pairs[s]));
            y[3 - s] = exchanged(joinNegative(pairs[s]));
        }
        dft<false>(x);
        dft<false>(y);
        storeGroup(x, work + plan.quads[quad].group * kElementFloats);
        storeGroup(y, work + plan.quads[quad].counterpart * kElementFloats);
    }

    forEachSubTransform(plan, work, inverseBelow);
    switch (plan.levels[0].radix) {
        case 2:
            lastRowPass<2>(plan, work, out);
            break;
        case 4:
            lastRowPass<4>(plan, work, out);
            break;
        default:
            lastRowPass<8>(plan, work, out);
            break;
    }
}

// --- Columns ------------------------------------------------------------------------------------

/// Butterflies from `begin` to `end` of the first pass over the columns, of whose inputs the
/// first `live` are not zero.
template <int kRadix, bool kUpperZero>
HWY_INLINE void firstColumnButterflies(const FftLevel& level, const float* block, int begin,
                                       int end, int live, float* work) {
    constexpr int kRow = HalfSpectrum::kRowFloats;
    constexpr int kInputs = kUpperZero ? kRadix / 2 : kRadix;
    for (int j = begin; j < end; ++j) {
        Complex x[kRadix];
        HWY_UNROLL(8)
        for (int q = 0; q < kInputs; ++q) {
            const float* at = block + static_cast<std::int64_t>(q * level.reach + j) * kRow;
            x[q] = q < live ? loadParts(at, at + HalfSpectrum::kBlockColumns) : zero();
        }
        dft<kUpperZero>(x);
        storeTurned(x, level, j, work);
    }
}

template <int kRadix>
void firstColumnPass(const FftPlan& plan, const float* block, int rowsIn, float* work) {
    const FftLevel& level = plan.levels[0];
    const int whole = rowsIn / level.reach;  // inputs that are live for every butterfly
    const int more = rowsIn % level.reach;   // butterflies that have one more
    const int ranges[2][3] = {{0, more, whole + 1}, {more, level.reach, whole}};
    for (const auto& range : ranges) {
        if (range[2] <= kRadix / 2)
            firstColumnButterflies<kRadix, true>(level, block, range[0], range[1], range[2], work);
        else
            firstColumnButterflies<kRadix, false>(level, block, range[0], range[1], range[2], work);
    }
}

template <int kRadix, int kResults>
HWY_INLINE void lastColumnButterflies(const FftLevel& level, const float* work, int begin, int end,
                                      int live, float* block) {
    constexpr int kRow = HalfSpectrum::kRowFloats;
    for (int j = begin; j < end; ++j) {
        Complex x[kRadix];
        loadTurned(work, level, j, x);
        dft<false>(x);
        HWY_UNROLL(8)
        for (int q = 0; q < kResults; ++q) {
            float* at = block + static_cast<std::int64_t>(q * level.reach + j) * kRow;
            if (q < live) storeParts(exchanged(x[q]), at, at + HalfSpectrum::kBlockColumns);
        }
    }
}

template <int kRadix>
void lastColumnPass(const FftPlan& plan, const float* work, int rowsOut, float* block) {
    const FftLevel& level = plan.levels[0];
    const int whole = rowsOut / level.reach;
    const int more = rowsOut % level.reach;
    const int ranges[2][3] = {{0, more, whole + 1}, {more, level.reach, whole}};
    for (const auto& range : ranges) {
        if (range[2] <= kRadix / 2)
            lastColumnButterflies<kRadix, kRadix / 2>(level, work, range[0], range[1], range[2],
                                                      block);
        else
            lastColumnButterflies<kRadix, kRadix>(level, work, range[0], range[1], range[2], block);
    }
}

/// The last forward and the first inverse pass over a group, with the filter in between.
HWY_INLINE void filterGroup(float* group, const float* filter) {
    Complex x[4];
    loadGroup(group, x);
    dft<false>(x);
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) {
        const float* factor = filter + s * HalfSpectrum::kRowFloats;
        hwy::Prefetch(factor + 2048);
        hwy::Prefetch(factor + 2048 + 16);
        x[s] = exchanged(mul(x[s], loadParts(factor, factor + HalfSpectrum::kBlockColumns)));
    }
    dft<false>(x);
    storeGroup(x, group);
}

/// filter: of the block's first element.
void filterBelow(const FftPlan& plan, int level, float* block, const float* filter) {
    const FftLevel& here = plan.levels[level];
    forwardPass(here, block);
    const int stride = here.stride * kElementFloats;
    const int filterStride = here.reach * HalfSpectrum::kRowFloats;
    for (int q = 0; q < 8; ++q) {
        if (level + 1 == plan.levelCount)
            filterGroup(block + q * stride, filter + q * filterStride);
        else
            filterBelow(plan, level + 1, block + q * stride, filter + q * filterStride);
    }
    inversePass(here, block);
}

template <int kRadix>
void filterLanes(const FftPlan& plan, float* block, const float* filter, int rowsIn, int rowsOut,
                 float* work) {
    firstColumnPass<kRadix>(plan, block, rowsIn, work);
    const FftLevel& first = plan.levels[0];
    for (int q = 0; q < kRadix; ++q)
        filterBelow(plan, 1, work + q * first.stride * kElementFloats,
                    filter + static_cast<std::int64_t>(q) * first.reach * HalfSpectrum::kRowFloats);
    lastColumnPass<kRadix>(plan, work, rowsOut, block);
}

void filterColumns(const FftPlan& plan, float* block, const float* filter, int columns, int rowsIn,
                   int rowsOut, float* work) {
    for (int column = 0; column < columns; column += kLanes) {
        float* at = block + column;
        const float* factors = filter + column;
        switch (plan.levels[0].radix) {
            case 2:
                filterLanes<2>(plan, at, factors, rowsIn, rowsOut, work);
                break;
            case 4:
                filterLanes<4>(plan, at, factors, rowsIn, rowsOut, work);
                break;
            default:
                filterLanes<8>(plan, at, factors, rowsIn, rowsOut, work);
                break;
        }
    }
}

}  // namespace

const DeconvFFTRows kRows = {kLanes, forwardRows, filterColumns, inverseRows};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<DeconvFFTRows> kDeconvFFTBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
