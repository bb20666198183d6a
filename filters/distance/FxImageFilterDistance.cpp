#include "filters/distance/FxImageFilterDistance.h"

#include <QMutexLocker>
#include <cstring>
#include <new>

#include "filters/distance/DistanceParameters.h"

using namespace DistanceParameters;

namespace {

const int kBackgroundLabel = 1;
const int kSmallestLabel = 2;
const int kLargestLabel = 254;
const int kBorder = 255;  ///< what the watershed draws between two regions
const int kWhite = 255;

const int kChessboard = 0;
const int kCityBlock = 1;
const int kFastMarching = 3;
const int kByDistanceWithBorders = 2 | 128;  ///< nearest area first, borders over 8 neighbours

// The statuses of the kernels are not looked at: a step that cannot run leaves its output as it is,
// and the frame goes on.

void shapeResult(HkImage& output, int type, int width, int height) {
    if (type == FilledAreas) {
        bestEffort(numeric::thresholdBothSides(output.data, output.step, width, height,
                                               kSmallestLabel, 0, kLargestLabel, 0));
        bestEffort(numeric::thresholdAbove(output.data, output.step, width, height, 0, kWhite));
    } else {
        bestEffort(numeric::thresholdBelow(output.data, output.step, width, height, kBorder, 0));
    }
}

}  // namespace

FxImageFilterDistance::FxImageFilterDistance(int instanceId) : FxImageFilter(TypeId, instanceId) {}

HkImage* FxImageFilterDistance::process(HkImage* image, const ParameterValues& values) {
    if (image->channels >= 3) bestEffort(processor().RGBtoGrayscale(image, nullptr));
    const int type = values.toInt(Type);
    const float level = static_cast<float>(values.toDouble(Det) / 3.0);

    OwnedImage output(new (std::nothrow) HkImage());
    if (!output) return image;
    findSeeds(*image, *output, level);
    if (!output->data) return image;  // no memory for a result: the caller keeps the frame

    const int width = image->roiWidth;
    const int height = image->roiHeight;
    bestEffort(processor().invert(image, nullptr));
    // On a two-level frame the seeds keep their labels and all of the background becomes one more
    // seed. On a grey frame grey bits mix with the labels, which is how it has always been.
    bestEffort(
        numeric::bitwiseOr(image->data, image->step, output->data, output->step, width, height));
    bestEffort(numeric::thresholdAbove(output->data, output->step, width, height, kLargestLabel,
                                       kBackgroundLabel));
    floodFromSeeds(*image, *output);
    shapeResult(*output, type, width, height);

    const OwnedImage consumed(image);  // the frame we were given gives way to the new one ...
    return output.release();           // ... which is the caller's
}

void FxImageFilterDistance::findSeeds(HkImage& grey, HkImage& output, float level) {
    const int width = grey.roiWidth;
    const int height = grey.roiHeight;
    const QMutexLocker lock(&m_guard);
    fitPlanes(grey);
    unsigned char* scratch = m_scratch.fit(numeric::distanceTransformScratchSize, width, height);
    bestEffort(numeric::distanceTransform(grey.data, grey.step, m_distancePlane.get(), m_planeStep,
                                          width, height, scratch));
    keepPeaks(width, height, level);

    float strongest = 0.0f;
    bestEffort(numeric::maximum(m_distancePlane.get(), m_planeStep, width, height, &strongest));
    output.setImage32f(grey.width, grey.height, grey.channels, m_distancePlane.get(), 0.0f,
                       strongest);
    output.roiWidth = width;
    output.roiHeight = height;
    bestEffort(processor().maxFilter(&output, 3, nullptr));

    int areaCount = 0;
    scratch = m_scratch.fit(numeric::labelSeedsScratchSize, width, height);
    bestEffort(numeric::labelSeeds(output.data, output.step, width, height, kSmallestLabel,
                                   kLargestLabel, kCityBlock, &areaCount, scratch));
}

/// Leaves in the distance plane only the peaks that rise by the share 1 / level of the largest
/// distance above the highest ground from which another peak can be reached.
void FxImageFilterDistance::keepPeaks(int width, int height, float level) {
    float* distance = m_distancePlane.get();
    float* work = m_workPlane.get();
    const int step = m_planeStep;

    float farthest = 0.0f;
    bestEffort(numeric::maximum(distance, step, width, height, &farthest));
    const float rise = farthest / level;
    bestEffort(numeric::thresholdFloat(distance, step, width, height, rise, 0.0f));
    bestEffort(numeric::subtractScalar(distance, step, rise, work, step, width, height));
    unsigned char* scratch = m_peakScratch.fit(numeric::peakStepScratchSize, width, height);
    bestEffort(numeric::peakStep(distance, step, work, step, width, height, scratch, kChessboard));
    bestEffort(numeric::subtract(work, step, distance, step, width, height));
}

void FxImageFilterDistance::floodFromSeeds(const HkImage& invertedGrey, HkImage& output) {
    const int width = invertedGrey.roiWidth;
    const int height = invertedGrey.roiHeight;
    const QMutexLocker lock(&m_guard);
    unsigned char* scratch = m_scratch.fit(numeric::watershedScratchSize, width, height);
    bestEffort(numeric::watershed(invertedGrey.data, invertedGrey.step, output.data, output.step,
                                  width, height, kFastMarching, kByDistanceWithBorders, scratch));
}

/// Planes of the frame's allocated size. Outside the region they are 0, whatever an earlier frame
/// left there.
void FxImageFilterDistance::fitPlanes(const HkImage& image) {
    if (image.width != m_planeWidth || image.height != m_planeHeight) {
        m_planeWidth = image.width;
        m_planeHeight = image.height;
        m_distancePlane.reset();
        m_workPlane.reset();
        m_peakScratch = Scratch();
        m_scratch = Scratch();
    }
    // Only a region that leaves out some of the last one's pixels needs the plane cleared.
    if (!m_distancePlane)
        m_distancePlane = numeric::makeZeroPlane(m_planeWidth, m_planeHeight, &m_planeStep);
    else if (image.roiWidth < m_regionWidth || image.roiHeight < m_regionHeight)
        std::memset(m_distancePlane.get(), 0,
                    std::size_t(m_planeStep) * std::size_t(m_planeHeight));
    m_regionWidth = image.roiWidth;
    m_regionHeight = image.roiHeight;
    if (!m_workPlane)
        m_workPlane.reset(numeric::allocFloatImage(m_planeWidth, m_planeHeight, &m_planeStep));
}

/// The three kernels that share a buffer ask for different sizes: it grows to the largest, and a
/// second frame of the same size allocates nothing.
unsigned char* FxImageFilterDistance::Scratch::fit(ScratchSize sizeOf, int width, int height) {
    int needed = 0;
    bestEffort(sizeOf(width, height, &needed));
    if (!block || needed > size) {
        block.reset();
        block = numeric::makeScratch(needed);
        size = needed;
    }
    return block.get();
}
