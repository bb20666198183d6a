// The numeric kernels, without the kernels: each writes down its call. Linked in the place of the
// library `numeric`.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "numeric/numeric.h"
#include "tests/filters/Recorded.h"

using recorded::Argument;

namespace {

std::atomic<int> g_inside{0};
std::atomic<bool> g_overlapped{false};

/// A block of the allocators, and "/step" behind it when the step is not its own.
template <class T>
std::string plane(const T* data, int step) {
    const bool own = !recorded::stepOf(data) || recorded::stepOf(data) == step;
    return Argument(data).text + (own ? "" : "/" + std::to_string(step));
}

std::string area(int width, int height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

std::string weights(const float* kernel, int size) {
    std::string all;
    for (int i = 0; i < size * size; ++i) all += (i ? "/" : "") + Argument(kernel[i]).text;
    return all;
}

numeric::KernelStatus done(const char* name, std::initializer_list<Argument> arguments) {
    recorded::note(recorded::call(name, arguments));
    return numeric::Success;
}

/// A kernel that works on memory which a filter keeps: no two may do so at once.
numeric::KernelStatus kept(const char* name, std::initializer_list<Argument> arguments) {
    if (g_inside++ > 0) g_overlapped = true;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    --g_inside;
    return done(name, arguments);
}

template <class State>
numeric::KernelStatus makeState(State** out) {
    *out = static_cast<State*>(std::malloc(1));
    return numeric::Success;
}

numeric::KernelStatus freed(const char* name, void* memory) {
    recorded::note(name);
    std::free(memory);
    return numeric::Success;
}

}  // namespace

bool recordedKernelsOverlapped() {
    return g_overlapped;
}

// clang-format off
namespace numeric {

void* allocAligned(int byteCount) {
    void* block = recorded::newBlock(static_cast<std::size_t>(byteCount), 0);
    done("bytes", {static_cast<unsigned char*>(block), byteCount});
    return block;
}
float* allocFloatImage(int width, int height, int* step) {
    *step = (width * 4 + 31) / 32 * 32;
    void* block = recorded::newBlock(static_cast<std::size_t>(*step * height + 1), *step);
    done("plane", {static_cast<float*>(block), area(width, height)});
    return static_cast<float*>(block);
}
void freeAligned(void* block) {
    recorded::note("~" + Argument(static_cast<unsigned char*>(block)).text);
    recorded::freeBlock(block);
}
void freeFloatImage(void* image) { freeAligned(image); }

KernelStatus deconvFFTInit(DeconvFFTState** out, const float* kernel, int size, int order, float threshold) {
    done("initFFT", {weights(kernel, size), order, threshold});
    return makeState(out);
}
KernelStatus deconvLRInit(DeconvLRState** out, const float* kernel, int size, int w, int h, float threshold) {
    done("initLR", {weights(kernel, size), area(w, h), threshold});
    return makeState(out);
}
KernelStatus deconvFFTFree(DeconvFFTState* state) { return freed("~FFT", state); }
KernelStatus deconvLRFree(DeconvLRState* state) { return freed("~LR", state); }
KernelStatus deconvFFT(const float* src, int srcStep, float* dst, int dstStep, int w, int h, DeconvFFTState*) {
    return kept("FFT", {plane(src, srcStep), plane(dst, dstStep), area(w, h)});
}
KernelStatus deconvLR(const float* src, int srcStep, float* dst, int dstStep, int w, int h, int iterations, DeconvLRState*) {
    return kept("LR", {plane(src, srcStep), plane(dst, dstStep), area(w, h), iterations});
}

KernelStatus distanceTransformScratchSize(int, int, int* size) { *size = 100; return Success; }
KernelStatus labelSeedsScratchSize(int, int, int* size) { *size = 50; return Success; }
KernelStatus watershedScratchSize(int, int, int* size) { *size = 200; return Success; }
KernelStatus peakStepScratchSize(int, int, int* size) { *size = 70; return Success; }
KernelStatus distanceTransform(const unsigned char* src, int, float* dst, int step, int w, int h, unsigned char* scratch) {
    return kept("distances", {src, plane(dst, step), area(w, h), scratch});
}
KernelStatus labelSeeds(unsigned char* marker, int, int w, int h, int smallest, int largest, int connectivity, int*, unsigned char* scratch) {
    return kept("label", {marker, area(w, h), smallest, largest, connectivity, scratch});
}
KernelStatus watershed(const unsigned char* relief, int, unsigned char* marker, int, int w, int h, int norm, int flags, unsigned char* scratch) {
    return kept("watershed", {relief, marker, area(w, h), norm, flags, scratch});
}
KernelStatus peakStep(const float* bound, int boundStep, float* grown, int grownStep, int w, int h, unsigned char* scratch, int mode) {
    return kept("peaks", {plane(bound, boundStep), plane(grown, grownStep), area(w, h), scratch, mode});
}

KernelStatus thresholdFloat(float* data, int step, int w, int h, float level, float value) {
    return done("cut", {plane(data, step), area(w, h), level, value});
}
KernelStatus subtractScalar(const float* src, int srcStep, float scalar, float* dst, int dstStep, int w, int h) {
    return done("minus", {plane(src, srcStep), scalar, plane(dst, dstStep), area(w, h)});
}
KernelStatus subtract(const float* src, int srcStep, float* srcDst, int srcDstStep, int w, int h) {
    return done("minus", {plane(src, srcStep), plane(srcDst, srcDstStep), area(w, h)});
}
KernelStatus maximum(const float* data, int step, int w, int h, float* max) {
    thread_local bool again = false;  // 8, then 5, in turn
    *max = again ? 5.0f : 8.0f;
    again = !again;
    return done("max", {plane(data, step), area(w, h)});
}
KernelStatus bitwiseOr(const unsigned char* src, int, unsigned char* srcDst, int, int w, int h) {
    return done("or", {src, srcDst, area(w, h)});
}
KernelStatus thresholdAbove(unsigned char* data, int, int w, int h, int level, int value) {
    return done("above", {data, area(w, h), level, value});
}
KernelStatus thresholdBelow(unsigned char* data, int, int w, int h, int level, int value) {
    return done("below", {data, area(w, h), level, value});
}
KernelStatus thresholdBothSides(unsigned char* data, int, int w, int h, int lower, int lowerValue, int upper, int upperValue) {
    return done("outside", {data, area(w, h), lower, lowerValue, upper, upperValue});
}

}  // namespace numeric
