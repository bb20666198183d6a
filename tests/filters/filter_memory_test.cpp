// The filters that make images or keep something, on a host whose memory runs out at one allocation
// of a frame: the plug-in's own, the image's, and those of the imaging operations. The imaging
// library is linked in, so that its allocations can be reached.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "filters/chansep/ChannelSepParameters.h"
#include "filters/chansep/FxImageFilterSep.h"
#include "filters/degauss/DegaussParameters.h"
#include "filters/degauss/FxImageFilterDegauss.h"
#include "filters/distance/DistanceParameters.h"
#include "filters/distance/FxImageFilterDistance.h"
#include "tests/kit/heap_probe.h"
#include "tests/kit/pixels.h"

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

/// A filter's work, asked for without a host's store.
using Work = std::function<HkImage*(HkImage* image, const ParameterValues& values)>;

template <class Filter>
Work make() {
    struct Opened : Filter {
        Opened() : Filter(1) {}
        using Filter::process;
    };
    return [filter = std::make_shared<Opened>()](HkImage* image, const ParameterValues& values) {
        return filter->process(image, values);
    };
}

struct Subject {
    const char* name;
    Work (*make)();
    int first, second;  ///< values of the parameters after "Enabled"
    int channels;       ///< of the smaller frame
};

ParameterValues valuesOf(const Subject& subject) {
    HkParamKeyframeVector values;
    for (const int value : {1, subject.first, subject.second})
        values.append(HkParamKeyframe(value));
    return ParameterValues(values);
}

struct Frame {
    int width, height, channels;
};

std::vector<unsigned char> bytesOf(const HkImage& image) {
    return {image.data, image.data + image.step * image.height};
}

const Subject kSubjects[] = {
    {"ChannelSeparation", make<FxImageFilterSep>, ChannelSepParameters::Hue, true, 3},
    {"LucyRichardson", make<FxImageFilterDegauss>, 3, DegaussParameters::LucyRichardson, 1},
    {"FFT", make<FxImageFilterDegauss>, 3, DegaussParameters::FFT, 1},
    {"Separator", make<FxImageFilterDistance>, DistanceParameters::BordersOnly, 50, 1},
};

class FilterMemory : public testing::TestWithParam<Subject> {
protected:
    FilterMemory() { cv::Mat::setDefaultAllocator(&m_mats); }
    ~FilterMemory() override { cv::Mat::setDefaultAllocator(nullptr); }

    /// Renders the frame while the given request finds no memory. Returns the result's bytes.
    std::vector<unsigned char> render(const Work& filter, const Frame& frame, int failing = -1) {
        HkImage* image = noise(frame.width, frame.height, frame.channels, 1).release();
        heap::reset(failing);
        image = filter(image, m_values);
        m_requests = heap::requests;
        heap::reset();
        const std::unique_ptr<HkImage> result(image);
        if (result && result->data) return bytesOf(*result);
        ADD_FAILURE() << "no image for request " << failing;
        return {};
    }

    int m_requests = 0;

private:
    const ParameterValues m_values = valuesOf(GetParam());
    ProbedMats m_mats;
};

}  // namespace

TEST_P(FilterMemory, TheFrameAfterOneThatRanOutOfMemoryIsRight) {
    const Frame small{60, 40, GetParam().channels}, large{90, 70, 3};
    for (const Frame& frame : {small, large}) {
        const std::vector<unsigned char> expected = render(GetParam().make(), frame);
        ASSERT_NE(expected, bytesOf(*noise(frame.width, frame.height, frame.channels, 1)));
        ASSERT_NE(expected, std::vector<unsigned char>(expected.size(), 0));

        // With nothing allocated yet, and with buffers of another size in place.
        for (const Frame& before : {Frame{}, small, large}) {
            int request = 0;
            for (bool hasFailed = true; hasFailed; ++request) {
                const int blocks = heap::blocks;
                {
                    const Work filter = GetParam().make();
                    if (before.width > 0) render(filter, before);
                    render(filter, frame, request);
                    hasFailed = m_requests > request;
                    EXPECT_EQ(render(filter, frame), expected)
                        << "after request " << request << " failed";
                }
                EXPECT_EQ(heap::blocks, blocks) << "after request " << request << " failed";
            }
            // A second frame of one size in grey finds all in place.
            const bool again = before.width == frame.width && frame.channels == 1;
            EXPECT_GT(request, again ? 0 : 2);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, FilterMemory, testing::ValuesIn(kSubjects),
                         [](const auto& row) { return std::string(row.param.name); });
