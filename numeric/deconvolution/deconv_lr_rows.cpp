#include <algorithm>
#include <cmath>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/deconvolution/deconv_lr_rows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/deconvolution/deconv_lr_rows.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::ScalableTag<float>;
using Vec = hn::Vec<Tag>;

constexpr float kVanished = 1.1754943e-15F;

// A NaN is never at most anything: it goes through both guards.
template <class V>
HWY_INLINE V guardedRatio(V observed, V blurred, V threshold) {
    return hn::IfThenZeroElse(hn::Le(hn::Abs(blurred), threshold), hn::Div(observed, blurred));
}

template <class D, class V>
HWY_INLINE V guardedProduct(D d, V estimate, V correction) {
    const auto limit = hn::Set(d, kVanished);
    const auto vanished =
        hn::Or(hn::Le(hn::Abs(estimate), limit), hn::Le(hn::Abs(correction), limit));
    return hn::IfThenZeroElse(vanished, hn::Mul(estimate, correction));
}

// --- Folded 5 x 5 kernel -------------------------------------------------------------------

// The ratios of a block are computed in chunks of columns, so that they need not leave the first
// cache: a tile of columns first - kHalo to first + kChunk, as many as the correction of a chunk
// looks at, and room for vectors that run on past them.
constexpr int kChunk = 128;
constexpr int kHalo = 2 * kFoldedReach;
constexpr int kTilePitch = kHalo + kChunk + kMostLanes + 12;

// The compiler would load a vector again for each of its uses, since the memory still holds it.
// Unaligned loads are what these loops have least of.
HWY_INLINE Vec keptInRegister(Vec v) {
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR
    asm("" : "+v"(v.raw));
#endif
    return v;
}

// The same kernel row applied to a row of pixels: what the row adds to the result at a vertical
// distance of 0, 1 and 2 rows.
struct RowParts {
    Vec centre, near, far;
};

struct FoldedWeights {
    Vec centre, near, far, nearNear, nearFar, farFar;

    explicit FoldedWeights(const FoldedKernel& k)
        : centre(hn::Set(Tag(), k.centre)),
          near(hn::Set(Tag(), k.near)),
          far(hn::Set(Tag(), k.far)),
          nearNear(hn::Set(Tag(), k.nearNear)),
          nearFar(hn::Set(Tag(), k.nearFar)),
          farFar(hn::Set(Tag(), k.farFar)) {}

    HWY_INLINE RowParts parts(const float* pixels) const {
        const Tag d;
        const Vec p0 = keptInRegister(hn::LoadU(d, pixels));
        const Vec p1 = hn::Add(hn::LoadU(d, pixels - 1), hn::LoadU(d, pixels + 1));
        const Vec p2 = hn::Add(hn::LoadU(d, pixels - 2), hn::LoadU(d, pixels + 2));
        return {weigh(centre, p0, near, p1, far, p2), weigh(near, p0, nearNear, p1, nearFar, p2),
                weigh(far, p0, nearFar, p1, farFar, p2)};
    }

    static HWY_INLINE Vec weigh(Vec a, Vec p0, Vec b, Vec p1, Vec c, Vec p2) {
        return hn::Add(hn::Add(hn::Mul(a, p0), hn::Mul(b, p1)), hn::Mul(c, p2));
    }
};

// The unfinished sums of four rows.
class Sums {
public:
    HWY_INLINE Sums(float* line, std::ptrdiff_t pitch)
        : m_line(line),
          m_pitch(pitch),
          m_0(hn::LoadU(Tag(), line)),
          m_1(hn::LoadU(Tag(), line + pitch)),
          m_2(hn::LoadU(Tag(), line + 2 * pitch)),
          m_3(hn::LoadU(Tag(), line + 3 * pitch)) {}

    // Takes in a row and gives the sum it completes, that of the row two rows above it.
    HWY_INLINE Vec add(RowParts row) {
        const Vec complete = hn::Add(m_0, row.far);
        m_0 = hn::Add(m_1, row.near);
        m_1 = hn::Add(m_2, row.centre);
        m_2 = hn::Add(m_3, row.near);
        m_3 = row.far;
        return complete;
    }

    HWY_INLINE void keep() const {
        hn::StoreU(m_0, Tag(), m_line);
        hn::StoreU(m_1, Tag(), m_line + m_pitch);
        hn::StoreU(m_2, Tag(), m_line + 2 * m_pitch);
        hn::StoreU(m_3, Tag(), m_line + 3 * m_pitch);
    }

private:
    float* m_line;
    std::ptrdiff_t m_pitch;
    Vec m_0, m_1, m_2, m_3;
};

HWY_INLINE void blurChunk(const FoldedWeights& weights, const FoldedBlock& b, int first, int end,
                          float* tile) {
    const Tag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const Vec threshold = hn::Set(d, b.threshold);
    for (int x = first; x < end; x += lanes) {
        Sums sums(b.blurSums + x, b.sumsPitch);
        const float* entering = b.entering + x;
        const float* observed = b.observed + x;
        float* ratio = tile + kHalo + (x - first);
        for (int r = 0; r < b.enteringRows; ++r) {
            const Vec blurred = sums.add(weights.parts(entering));
            hn::StoreU(guardedRatio(hn::LoadU(d, observed), blurred, threshold), d, ratio);
            entering += b.pitch;
            observed += b.pitch;
            ratio += kTilePitch;
        }
        sums.keep();
    }
}

HWY_INLINE void correctChunk(const FoldedWeights& weights, const FoldedBlock& b, int first, int end,
                             const float* tile) {
    const Tag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    for (int x = first; x < end; x += lanes) {
        Sums sums(b.correctionSums + x + kFoldedReach, b.sumsPitch);
        const float* ratio = tile + kFoldedReach + (x - first) + b.firstLeaving * kTilePitch;
        const float* leaving = b.leaving + x;
        float* corrected = b.corrected + x;
        const auto inside = hn::FirstN(d, static_cast<size_t>(std::min(lanes, end - x)));
        const bool whole = x + lanes <= end;
        for (int r = 0; r < b.leavingRows; ++r) {
            const Vec correction = sums.add(weights.parts(ratio));
            const Vec product = guardedProduct(d, hn::LoadU(d, leaving), correction);
            if (whole)
                hn::StoreU(product, d, corrected);
            else
                hn::BlendedStore(product, inside, d, corrected);
            ratio += kTilePitch;
            leaving += b.pitch;
            corrected += b.pitch;
        }
        sums.keep();
    }
}

void foldedBlock(const FoldedKernel& kernel, const FoldedBlock& b) {
    const FoldedWeights weights(kernel);
    alignas(64) float tile[kFoldedBlockRows * kTilePitch] = {};
    for (int first = 0; first < b.width; first += kChunk) {
        const int end = std::min(first + kChunk, b.width);
        blurChunk(weights, b, first, end, tile);
        const bool last = end == b.width;
        if (last)  // no ratios there, whatever the last vector has made of them
            for (int r = 0; r < b.enteringRows; ++r)
                std::memset(tile + r * kTilePitch + kHalo + (end - first), 0,
                            kFoldedReach * sizeof(float));
        correctChunk(weights, b, first - kFoldedReach, last ? end : end - kFoldedReach, tile);
        for (int r = 0; r < b.enteringRows; ++r)
            std::memcpy(tile + r * kTilePitch, tile + r * kTilePitch + kChunk,
                        kHalo * sizeof(float));
    }
}

// --- Any kernel ----------------------------------------------------------------------------

// Several vectors at a time share the weights and do not wait for each other's sums.
template <int kVectors, class D>
HWY_INLINE void convolve(D d, const ConvolvedRow& row, int x, hn::Vec<D> (&sums)[kVectors]) {
    const int lanes = static_cast<int>(hn::Lanes(d));
    const int size = row.kernelSize;
    const float* weight = row.kernel + static_cast<std::ptrdiff_t>(size) * size;
    for (auto& sum : sums) sum = hn::Zero(d);
    for (int i = 0; i < size; ++i) {
        const float* pixels = row.input + i * row.pitch + x;
        for (int j = 0; j < size; ++j) {
            const auto weights = hn::Set(d, *--weight);
#pragma GCC unroll 4
            for (int v = 0; v < kVectors; ++v)
                sums[v] = hn::Add(sums[v], hn::Mul(weights, hn::LoadU(d, pixels + j + v * lanes)));
        }
    }
}

// Calls use(d, x, sum) for each vector, in steps of kVectors of them while those fit; gives the
// column after them.
template <int kVectors, class D, class Use>
HWY_INLINE int convolveColumns(D d, const ConvolvedRow& row, int first, const Use& use) {
    const int lanes = static_cast<int>(hn::Lanes(d));
    int x = first;
    for (; x + kVectors * lanes <= row.width; x += kVectors * lanes) {
        hn::Vec<D> sums[kVectors];
        convolve<kVectors>(d, row, x, sums);
#pragma GCC unroll 4
        for (int v = 0; v < kVectors; ++v) use(d, x + v * lanes, sums[v]);
    }
    return x;
}

template <class Use>
HWY_INLINE void convolveRow(const ConvolvedRow& row, const Use& use) {
    int x = convolveColumns<4>(Tag(), row, 0, use);
    x = convolveColumns<1>(Tag(), row, x, use);
    x = convolveColumns<1>(hn::CappedTag<float, 4>(), row, x, use);
    convolveColumns<1>(hn::CappedTag<float, 1>(), row, x, use);
}

void blurRow(const ConvolvedRow& row, const float* observed, float threshold, float* ratio) {
    convolveRow(row, [=](auto d, int x, auto blurred) HWY_ATTR {
        const auto pixels = hn::LoadU(d, observed + x);
        hn::StoreU(guardedRatio(pixels, blurred, hn::Set(d, threshold)), d, ratio + x);
    });
}

void correctRow(const ConvolvedRow& row, const float* estimate, float* corrected) {
    convolveRow(row, [=](auto d, int x, auto correction) HWY_ATTR {
        hn::StoreU(guardedProduct(d, hn::LoadU(d, estimate + x), correction), d, corrected + x);
    });
}

void resultRow(const float* estimate, float threshold, float* dst, int width) {
    const Tag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const Vec thresholds = hn::Set(d, threshold);
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const Vec pixels = hn::LoadU(d, estimate + x);
        hn::StoreU(hn::IfThenElseZero(hn::Gt(hn::Abs(pixels), thresholds), pixels), d, dst + x);
    }
    for (; x < width; ++x) dst[x] = std::abs(estimate[x]) > threshold ? estimate[x] : 0.0F;
}

}  // namespace

constexpr DeconvLRRows kRows = {foldedBlock, blurRow, correctRow, resultRow};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<DeconvLRRows> kDeconvLRBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
