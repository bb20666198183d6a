#pragma once

#include "framework/FxImageFilter.h"

/// Renders channel separation.
class FxImageFilterSep : public FxImageFilter {
public:
    explicit FxImageFilterSep(int instanceId);

protected:
    HkImage* process(HkImage* image, const ParameterValues& values) override;
};
