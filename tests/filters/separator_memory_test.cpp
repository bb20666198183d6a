// The object separator on a host whose memory runs out at one allocation of a frame: the plug-in's
// own, the image's, and those of the imaging operations. The imaging library is linked in, so that
// its allocations can be reached.

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <opencv2/core.hpp>
#include <vector>

#include "filters/distance/DistanceParameters.h"
#include "filters/distance/FxImageFilterDistance.h"
#include "tests/kit/heap_probe.h"

namespace {

/// Hands out the same memory as OpenCV's own allocator, when the heap lets it.
class ProbedMats : public cv::MatAllocator {
public:
    cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, std::size_t* steps,
                           cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
        if (!heap::grants()) CV_Error(cv::Error::StsNoMem, "the heap is full");
        return m_own->allocate(dims, sizes, type, data, steps, flags, usage);
    }
    bool allocate(cv::UMatData* data, cv::AccessFlag flags,
                  cv::UMatUsageFlags usage) const override {
        return m_own->allocate(data, flags, usage);
    }
    void deallocate(cv::UMatData* data) const override { m_own->deallocate(data); }

private:
    cv::MatAllocator* m_own = cv::Mat::getStdAllocator();
};

struct Separator : FxImageFilterDistance {
    Separator() : FxImageFilterDistance(1) {}
    using FxImageFilterDistance::process;
};

ParameterValues bordersWithDetails(int details) {
    HkParamKeyframeVector values;
    for (const int value : {1, int(BordersOnly), details}) values.append(HkParamKeyframe(value));
    return ParameterValues(values);
}

/// Two overlapping discs, white on black.
std::unique_ptr<HkImage> discs(int width, int height, int channels) {
    auto image = std::make_unique<HkImage>(width, height, channels, nullptr, 4u);
    const auto isInside = [=](int x, int y, double centre) {
        const double dx = x - centre * width, dy = y - 0.5 * height;
        return dx * dx + dy * dy < 0.04 * width * width;
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * channels; ++x)
            if (isInside(x / channels, y, 0.35) || isInside(x / channels, y, 0.65))
                image->data[y * image->step + x] = 255;
    return image;
}

struct Frame {
    int width, height, channels;
};

std::vector<unsigned char> bytesOf(const HkImage& image) {
    return {image.data, image.data + image.step * image.height};
}

class SeparatorMemory : public testing::Test {
protected:
    SeparatorMemory() { cv::Mat::setDefaultAllocator(&m_mats); }
    ~SeparatorMemory() override { cv::Mat::setDefaultAllocator(nullptr); }

    /// Renders the frame while the given request finds no memory. Returns the result's bytes.
    std::vector<unsigned char> render(Separator& separator, const Frame& frame, int failing = -1) {
        HkImage* image = discs(frame.width, frame.height, frame.channels).release();
        heap::reset(failing);
        image = separator.process(image, m_values);
        m_requests = heap::requests;
        heap::reset();
        const std::unique_ptr<HkImage> result(image);
        if (result && result->data) return bytesOf(*result);
        ADD_FAILURE() << "no image for request " << failing;
        return {};
    }

    int m_requests = 0;

private:
    const ParameterValues m_values = bordersWithDetails(50);
    ProbedMats m_mats;
};

}  // namespace

TEST_F(SeparatorMemory, TheFrameAfterOneThatRanOutOfMemoryIsRight) {
    const Frame small{60, 40, 1}, large{90, 70, 3};
    for (const Frame& frame : {small, large}) {
        Separator untroubled;
        const std::vector<unsigned char> expected = render(untroubled, frame);
        const std::vector<unsigned char> lines(expected.size(), 0);
        ASSERT_NE(expected, lines) << "nothing was separated";

        // With nothing allocated yet, and with buffers of another size in place.
        for (const Frame& before : {Frame{}, small, large}) {
            int request = 0;
            for (bool hasFailed = true; hasFailed; ++request) {
                const int blocks = heap::blocks;
                {
                    Separator separator;
                    if (before.width > 0) render(separator, before);
                    render(separator, frame, request);
                    hasFailed = m_requests > request;
                    EXPECT_EQ(render(separator, frame), expected)
                        << "after request " << request << " failed";
                }
                EXPECT_EQ(heap::blocks, blocks) << "after request " << request << " failed";
            }
            EXPECT_GT(request, 3) << "an image and what the imaging operations need";
        }
    }
}
