#pragma once

#include <QMutex>

#include "framework/FxImageFilter.h"
#include "numeric/owned.h"

/// Renders the object separator: distance map, its peaks as seeds, watershed from the seeds.
///
/// Keeps two float planes and two scratch buffers from frame to frame. Threads that share one
/// object take turns with them; each frame gets the result it would get alone.
class FxImageFilterDistance : public FxImageFilter {
public:
    explicit FxImageFilterDistance(int instanceId);

protected:
    HkImage* process(HkImage* image, const ParameterValues& values) override;

private:
    void findSeeds(HkImage& grey, HkImage& output, float level);
    void keepPeaks(int width, int height, float level);
    void floodFromSeeds(const HkImage& invertedGrey, HkImage& output);
    void fitPlanes(const HkImage& image);

    /// Scratch that a kernel of the frame in hand may use.
    using ScratchSize = numeric::KernelStatus (*)(int width, int height, int* size);
    struct Scratch {
        int size = 0;
        numeric::OwnedScratch block;

        unsigned char* fit(ScratchSize sizeOf, int width, int height);
    };

    // All guarded by m_guard.
    int m_planeStep = 0;  ///< of both planes, bytes
    int m_planeWidth = 0;
    int m_planeHeight = 0;
    int m_regionWidth = 0;  ///< of the last frame: the part of the distance plane that is not 0
    int m_regionHeight = 0;
    numeric::OwnedPlane m_distancePlane;  ///< distance map, later how far peaks stand out
    numeric::OwnedPlane m_workPlane;
    Scratch m_peakScratch;
    Scratch m_scratch;  ///< of the distance transform, the labelling and the watershed in turn
    QMutex m_guard;
};
