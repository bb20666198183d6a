#pragma once

#include "framework/FxImageFilter.h"

/// Renders the adaptive threshold.
class FxImageFilterAdaptTresh : public FxImageFilter {
public:
    explicit FxImageFilterAdaptTresh(int instanceId);

protected:
    HkImage* process(HkImage* image, const ParameterValues& values) override;
};
