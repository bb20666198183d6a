#pragma once

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

class HkImage;

/// Renders one applied filter instance, frame by frame. Made by a manipulator, owned by the host.
class FXKERNELAPI_EXPORT HkImageFilter {
public:
    explicit HkImageFilter(int objectId);
    virtual ~HkImageFilter();

    virtual int filterTypeId() = 0;

    /// Returns the picture that takes the place of `image`: the same object, or a new one, in which
    /// case the filter has deleted `image`. Null for null.
    virtual HkImage* processImage(HkImage* image, __int64 frame) = 0;

protected:
    int objectId;  ///< the instance whose values are in force

private:
    HkImageFilter(const HkImageFilter&);
    HkImageFilter& operator=(const HkImageFilter&);
};
