#pragma once

#include <cstdint>

#include "host/media/MediaSource.h"
#include "host/render/FrameRunner.h"

namespace render {

/// A frame that went through the filters.
struct RenderedFrame {
    std::int64_t frame;
    const HkImage& image;
    const media::PictureProperties& properties;  ///< of the input
    bool showsObjects;  ///< the white areas are objects, as far as the host knows the last filter
};

/// What a command makes of the frames it renders: pictures, numbers.
class ResultTaker {
public:
    virtual ~ResultTaker() = default;

    /// Called once for each frame, for several at once on several threads. Answers with what is
    /// left to do when the processor has done its part, which must not need `rendered`; empty when
    /// nothing is left. Throws as a FrameWork.
    virtual FrameRest take(const RenderedFrame& rendered) = 0;

    /// True when take() must be called in ascending order of frames, one call at a time.
    virtual bool takesInOrder() const { return false; }

protected:
    ResultTaker() = default;
    ResultTaker(const ResultTaker&) = delete;
    ResultTaker& operator=(const ResultTaker&) = delete;
};

}  // namespace render
