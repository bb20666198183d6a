#pragma once

#include <QMutex>

#include "framework/FxImageFilter.h"
#include "numeric/owned.h"

/// Renders deconvolution: Lucy-Richardson or FFT on the luma of a colour frame, or on a grey frame
/// itself.
///
/// Keeps the state of the method in force and two float planes from frame to frame. Threads that
/// share one object take turns with them; each frame gets the result it would get alone.
class FxImageFilterDegauss : public FxImageFilter {
public:
    explicit FxImageFilterDegauss(int instanceId);
    ~FxImageFilterDegauss() override;

protected:
    HkImage* process(HkImage* image, const ParameterValues& values) override;

private:
    void deconvolve(HkImage& working, float amount, int method);
    bool stateFits(const HkImage& working, float amount, int method) const;
    void rebuildState(const HkImage& working, float amount, int method);
    void fitBuffers(const HkImage& working);
    void runMethod(const HkImage& working);

    // All guarded by m_stateMutex.
    int m_bufferStep = 0;         ///< of both planes, bytes
    float m_cachedAmount = 1.0f;  ///< what the state was built for ...
    int m_cachedMethod = 1;
    int m_cachedRegionWidth = 0;
    int m_cachedRegionHeight = 0;
    int m_cachedWidth = 0;  ///< ... and the frame size of state and planes
    int m_cachedHeight = 0;
    int m_regionWidth = 0;  ///< of the last frame: the part of the result that may not be 0
    int m_regionHeight = 0;
    numeric::OwnedPlane m_sourceBuffer;
    numeric::OwnedPlane m_resultBuffer;
    numeric::OwnedDeconvLR m_lucyRichardsonState;
    numeric::OwnedDeconvFFT m_fftDeconvState;
    QMutex m_stateMutex;
};
