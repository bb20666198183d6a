#pragma once

#include <memory>

#include "framework/BestEffort.h"
#include "framework/ParameterTable.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "framework/contract/ImageProcessor/HkImage.h"
#include "framework/contract/ImageProcessor/HkImageProcessor.h"

using OwnedImage = std::unique_ptr<HkImage>;

/// What every per-frame filter does: look the instance up, pass the frame through when there is
/// nothing to do.
class FxImageFilter : public HkImageFilter {
public:
    int filterTypeId() final { return m_typeId; }
    HkImage* processImage(HkImage* image, __int64 frame) final;

protected:
    FxImageFilter(int typeId, int instanceId) : HkImageFilter(instanceId), m_typeId(typeId) {}

    /// The filter's own work on an enabled instance; same ownership as processImage(). image is
    /// never null.
    virtual HkImage* process(HkImage* image, const ParameterValues& values) = 0;

    /// The host's imaging operations, fetched anew for each as the host may exchange them.
    static HkImageProcessor& processor() { return *HkImageProcessor::getInstance(nullptr); }

    /// A new image of the size and region of `image`, rows aligned as the host expects. It has
    /// pixels, or it is null: memory ran out.
    static OwnedImage makeImage(const HkImage& image, int channels);

    /// Lets fill(HkImage& made) draw into a new image of the size and region of `image`. The new
    /// image then takes the place of `image`, which is deleted. `image` comes back where fill says
    /// false or memory ran out.
    template <class Fill>
    static HkImage* replaceImage(HkImage* image, int channels, Fill fill) {
        OwnedImage made = makeImage(*image, channels);
        if (!made || !fill(*made)) return image;
        const OwnedImage consumed(image);  // the frame we were given gives way to the new one ...
        return made.release();             // ... which is the caller's
    }

private:
    const int m_typeId;
};
