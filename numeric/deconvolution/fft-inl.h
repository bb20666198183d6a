// Butterflies and in-place passes over transforms of interleaved lanes, for one target at a time.

#if defined(NUMERIC_FFT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_FFT_INL_H_
#undef NUMERIC_FFT_INL_H_
#else
#define NUMERIC_FFT_INL_H_
#endif

#include "hwy/highway.h"
#include "numeric/base/lanes-inl.h"
#include "numeric/deconvolution/fft_plan.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

// As many transforms run side by side as a vector has lanes.

constexpr int kLineFloats = 16;  // of a cache line

enum class PrefetchFor { Reading, Writing };

/// Brings a cache line as near as the second cache, so that the innermost one keeps what is at
/// work. The address may lie a little outside of an array.
template <PrefetchFor kUse>
HWY_INLINE void prefetch(const float* at) {
    __builtin_prefetch(at, kUse == PrefetchFor::Writing, 2);
}

/// One element of all transforms: the real parts, then the imaginary parts.
struct Complex {
    Vec re;
    Vec im;
};

/// Floats that one element takes in a work array.
constexpr int kElementFloats = 2 * kLanes;

HWY_INLINE Complex loadParts(const float* re, const float* im) {
    return {hn::LoadU(Lanes(), re), hn::LoadU(Lanes(), im)};
}

HWY_INLINE void storeParts(Complex a, float* re, float* im) {
    hn::StoreU(a.re, Lanes(), re);
    hn::StoreU(a.im, Lanes(), im);
}

HWY_INLINE Complex load(const float* at) {
    return loadParts(at, at + kLanes);
}

HWY_INLINE void store(Complex a, float* at) {
    storeParts(a, at, at + kLanes);
}

/// With real and imaginary part exchanged, a forward transform computes an inverse one.
HWY_INLINE Complex exchanged(Complex a) {
    return {a.im, a.re};
}

HWY_INLINE Complex zero() {
    return {hn::Zero(Lanes()), hn::Zero(Lanes())};
}

HWY_INLINE Complex add(Complex a, Complex b) {
    return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
}

HWY_INLINE Complex sub(Complex a, Complex b) {
    return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)};
}

HWY_INLINE Complex mul(Complex a, Complex b) {
    return {hn::Sub(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
            hn::Add(hn::Mul(a.re, b.im), hn::Mul(a.im, b.re))};
}

HWY_INLINE Complex turn(Complex a, const float* twiddle) {
    return mul(a, {hn::Set(Lanes(), twiddle[0]), hn::Set(Lanes(), twiddle[1])});
}

/// a - i b and a + i b.
HWY_INLINE Complex subTurned(Complex a, Complex b) {
    return {hn::Add(a.re, b.im), hn::Sub(a.im, b.re)};
}
HWY_INLINE Complex addTurned(Complex a, Complex b) {
    return {hn::Sub(a.re, b.im), hn::Add(a.im, b.re)};
}

// Discrete Fourier transforms of 2, 4 and 8 elements, results in natural order. kUpperZero: the
// upper half of the input is known to be zero and not looked at.

template <bool kUpperZero>
HWY_INLINE void dft(Complex (&x)[2]) {
    const Complex low = x[0];
    x[0] = kUpperZero ? low : add(low, x[1]);
    x[1] = kUpperZero ? low : sub(low, x[1]);
}

template <bool kUpperZero>
HWY_INLINE void dft(Complex (&x)[4]) {
    const Complex s0 = kUpperZero ? x[0] : add(x[0], x[2]);
    const Complex s1 = kUpperZero ? x[0] : sub(x[0], x[2]);
    const Complex s2 = kUpperZero ? x[1] : add(x[1], x[3]);
    const Complex s3 = kUpperZero ? x[1] : sub(x[1], x[3]);
    x[0] = add(s0, s2);
    x[1] = subTurned(s1, s3);
    x[2] = sub(s0, s2);
    x[3] = addTurned(s1, s3);
}

template <bool kUpperZero>
HWY_INLINE void dft(Complex (&x)[8]) {
    const Vec half = hn::Set(Lanes(), 0.70710678118654752440F);  // sine and cosine of pi / 4
    Complex even[4];
    Complex odd[4];
    HWY_UNROLL(4)
    for (int i = 0; i < 4; ++i) {
        even[i] = kUpperZero ? x[i] : add(x[i], x[i + 4]);
        odd[i] = kUpperZero ? x[i] : sub(x[i], x[i + 4]);
    }
    // Turned by 0, 1, 2 and 3 eighths.
    odd[1] = {hn::Mul(half, hn::Add(odd[1].re, odd[1].im)),
              hn::Mul(half, hn::Sub(odd[1].im, odd[1].re))};
    const Complex third = {hn::Mul(half, hn::Sub(odd[3].im, odd[3].re)),
                           hn::Mul(half, hn::Add(odd[3].re, odd[3].im))};
    // 2 eighths make -i, 3 eighths leave third with its imaginary part negated.
    const Complex s0 = subTurned(odd[0], odd[2]);
    const Complex s1 = addTurned(odd[0], odd[2]);
    const Complex s2 = {hn::Add(odd[1].re, third.re), hn::Sub(odd[1].im, third.im)};
    const Complex s3 = {hn::Sub(odd[1].re, third.re), hn::Add(odd[1].im, third.im)};
    dft<false>(even);
    x[0] = even[0];
    x[2] = even[1];
    x[4] = even[2];
    x[6] = even[3];
    x[1] = add(s0, s2);
    x[5] = sub(s0, s2);
    x[3] = subTurned(s1, s3);
    x[7] = addTurned(s1, s3);
}

/// The results of butterfly j of a pass, turned and stored.
template <int kRadix>
HWY_INLINE void storeTurned(const Complex (&x)[kRadix], const FftLevel& level, int j,
                            float* block) {
    float* at = block + FftPlan::stored(j) * kElementFloats;
    const int stride = level.stride * kElementFloats;
    const float* twiddle = level.twiddles + 2 * j * (kRadix - 1);
    store(x[0], at);
    HWY_UNROLL(8)
    for (int p = 1; p < kRadix; ++p) store(turn(x[p], twiddle + 2 * (p - 1)), at + p * stride);
}

/// The inputs of butterfly j of an inverse pass, exchanged and turned.
template <int kRadix>
HWY_INLINE void loadTurned(const float* block, const FftLevel& level, int j, Complex (&x)[kRadix]) {
    const float* at = block + FftPlan::stored(j) * kElementFloats;
    const int stride = level.stride * kElementFloats;
    const float* twiddle = level.twiddles + 2 * j * (kRadix - 1);
    x[0] = exchanged(load(at));
    HWY_UNROLL(8)
    for (int p = 1; p < kRadix; ++p)
        x[p] = turn(exchanged(load(at + p * stride)), twiddle + 2 * (p - 1));
}

// A group of 4 elements, to which the last pass is a dft.
HWY_INLINE void loadGroup(const float* at, Complex (&x)[4]) {
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) x[s] = load(at + s * kElementFloats);
}

HWY_INLINE void storeGroupExchanged(const Complex (&x)[4], float* at) {
    HWY_UNROLL(4)
    for (int s = 0; s < 4; ++s) store(exchanged(x[s]), at + s * kElementFloats);
}

/// A radix-8 pass over one transform of the level, in place.
void forwardPass(const FftLevel& level, float* block) {
    const int stride = level.stride * kElementFloats;
    for (int j = 0; j < level.reach; ++j) {
        const float* at = block + FftPlan::stored(j) * kElementFloats;
        Complex x[8];
        HWY_UNROLL(8)
        for (int q = 0; q < 8; ++q) x[q] = load(at + q * stride);
        dft<false>(x);
        storeTurned(x, level, j, block);
    }
}

/// Undoes forwardPass but for a factor of 8.
void inversePass(const FftLevel& level, float* block) {
    const int stride = level.stride * kElementFloats;
    for (int j = 0; j < level.reach; ++j) {
        float* at = block + FftPlan::stored(j) * kElementFloats;
        Complex x[8];
        loadTurned(block, level, j, x);
        dft<false>(x);
        HWY_UNROLL(8)
        for (int q = 0; q < 8; ++q) store(exchanged(x[q]), at + q * stride);
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#endif
