#pragma once

#include "framework/FxImageFilter.h"

/// Renders dilate/erode.
class FxImageFilterDilate : public FxImageFilter {
public:
    explicit FxImageFilterDilate(int instanceId);

protected:
    HkImage* process(HkImage* image, const ParameterValues& values) override;
};
