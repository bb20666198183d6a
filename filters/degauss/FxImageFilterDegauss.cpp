#include "filters/degauss/FxImageFilterDegauss.h"

#include <QMutexLocker>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "filters/degauss/DegaussParameters.h"

using namespace DegaussParameters;

namespace {

// The blurs that are undone. Both are close to a Gaussian of standard deviation 0.7 and 1 pixel.
const int kFFTKernelSize = 3;
const float kFFTKernel[kFFTKernelSize * kFFTKernelSize] = {
    0.0625f, 0.125f, 0.0625f,  //
    0.125f,  0.25f,  0.125f,   //
    0.0625f, 0.125f, 0.0625f,
};

constexpr float weight(int value) {
    return static_cast<float>(value) / 571.0f;
}

const int kLRKernelSize = 5;
const float kLRKernel[kLRKernelSize * kLRKernelSize] = {
    weight(2),  weight(7),  weight(12),  weight(7),  weight(2),   //
    weight(7),  weight(31), weight(52),  weight(31), weight(7),   //
    weight(12), weight(52), weight(127), weight(52), weight(12),  //
    weight(7),  weight(31), weight(52),  weight(31), weight(7),   //
    weight(2),  weight(7),  weight(12),  weight(7),  weight(2),
};
const float kLRThreshold = 1.0e-4f;

const float kBlack = 0.0f;
const float kWhite = 255.0f;

float fftThreshold(float amount) {
    return static_cast<float>(1.0 / (amount * 5.0));
}

/// Of the width alone, on purpose: frames are landscape. A frame too high for its order is refused
/// by the transform.
int fftOrder(int width) {
    const int smallestOrder = 10;
    const double order = std::log(static_cast<double>(width)) / std::log(2.0) + 1.0;
    return order > smallestOrder ? static_cast<int>(order) : smallestOrder;
}

int iterations(float amount) {
    const double most = 1 << 30;  // what a document may hold beyond the page has no end of its own
    return static_cast<int>(std::max(-most, std::min(2.0 * amount, most)));
}

}  // namespace

FxImageFilterDegauss::FxImageFilterDegauss(int instanceId) : FxImageFilter(TypeId, instanceId) {}

FxImageFilterDegauss::~FxImageFilterDegauss() {
    m_fftDeconvState.reset();
    m_lucyRichardsonState.reset();
    m_sourceBuffer.reset();
    m_resultBuffer.reset();
}

HkImage* FxImageFilterDegauss::process(HkImage* image, const ParameterValues& values) {
    const float amount = static_cast<float>(values.toInt(Threshold));
    const int method = values.toInt(Method);
    if (image->channels == 1) {
        deconvolve(*image, amount, method);
        return image;
    }
    if (image->channels < 3) return image;

    const OwnedImage luma = makeImage(*image, 1);
    if (!luma) return image;
    bestEffort(processor().RGBtoYUV(image, nullptr));
    bestEffort(processor().copyChannel(image, 0, luma.get(), 0));
    deconvolve(*luma, amount, method);
    bestEffort(processor().copyChannel(luma.get(), 0, image, 0));
    bestEffort(processor().YUVtoRGB(image, nullptr));
    return image;
}

void FxImageFilterDegauss::deconvolve(HkImage& working, float amount, int method) {
    const QMutexLocker lock(&m_stateMutex);
    if (!stateFits(working, amount, method)) rebuildState(working, amount, method);
    fitBuffers(working);

    bestEffort(working.getBufferCopy32f(m_sourceBuffer.get(), kBlack, kWhite));
    runMethod(working);
    // Whatever the plane holds: a method that is unknown, or refuses the size, leaves it as it is.
    working.setImage32f(working.width, working.height, working.channels, m_resultBuffer.get(),
                        kBlack, kWhite);
}

bool FxImageFilterDegauss::stateFits(const HkImage& working, float amount, int method) const {
    // A state that memory was too short for is tried again.
    const bool missing = (method == LucyRichardson && !m_lucyRichardsonState) ||
                         (method == FFT && !m_fftDeconvState);
    return !missing && amount == m_cachedAmount && method == m_cachedMethod &&
           working.width == m_cachedWidth && working.height == m_cachedHeight &&
           working.roiWidth <= m_cachedRegionWidth && working.roiHeight <= m_cachedRegionHeight;
}

/// A state that cannot be made stays null; the method then refuses to run.
void FxImageFilterDegauss::rebuildState(const HkImage& working, float amount, int method) {
    m_cachedAmount = amount;
    m_cachedMethod = method;
    m_cachedRegionWidth = working.roiWidth;
    m_cachedRegionHeight = working.roiHeight;
    m_lucyRichardsonState.reset();
    m_fftDeconvState.reset();
    if (method == LucyRichardson) {
        numeric::DeconvLRState* state = nullptr;
        bestEffort(numeric::deconvLRInit(&state, kLRKernel, kLRKernelSize,
                                         working.roiWidth + kLRKernelSize,
                                         working.roiHeight + kLRKernelSize, kLRThreshold));
        m_lucyRichardsonState.reset(state);
    } else if (method == FFT) {
        numeric::DeconvFFTState* state = nullptr;
        bestEffort(numeric::deconvFFTInit(&state, kFFTKernel, kFFTKernelSize,
                                          fftOrder(working.width), fftThreshold(amount)));
        m_fftDeconvState.reset(state);
    }
}

/// Planes of the frame's allocated size. Outside the region the result is 0, whatever an earlier
/// frame left there.
void FxImageFilterDegauss::fitBuffers(const HkImage& working) {
    if (working.width != m_cachedWidth || working.height != m_cachedHeight) {
        m_cachedWidth = working.width;
        m_cachedHeight = working.height;
        m_sourceBuffer.reset();
        m_resultBuffer.reset();
    }
    if (!m_sourceBuffer)
        m_sourceBuffer = numeric::makeZeroPlane(m_cachedWidth, m_cachedHeight, &m_bufferStep);
    // Only a region that leaves out some of the last one's pixels needs the plane cleared.
    if (!m_resultBuffer)
        m_resultBuffer = numeric::makeZeroPlane(m_cachedWidth, m_cachedHeight, &m_bufferStep);
    else if (working.roiWidth < m_regionWidth || working.roiHeight < m_regionHeight)
        std::memset(m_resultBuffer.get(), 0,
                    std::size_t(m_bufferStep) * std::size_t(m_cachedHeight));
    m_regionWidth = working.roiWidth;
    m_regionHeight = working.roiHeight;
}

void FxImageFilterDegauss::runMethod(const HkImage& working) {
    if (m_cachedMethod == FFT)
        bestEffort(numeric::deconvFFT(m_sourceBuffer.get(), m_bufferStep, m_resultBuffer.get(),
                                      m_bufferStep, working.roiWidth, working.roiHeight,
                                      m_fftDeconvState.get()));
    else if (m_cachedMethod == LucyRichardson)
        bestEffort(numeric::deconvLR(m_sourceBuffer.get(), m_bufferStep, m_resultBuffer.get(),
                                     m_bufferStep, working.roiWidth, working.roiHeight,
                                     iterations(m_cachedAmount), m_lucyRichardsonState.get()));
}
