#pragma once

#include "framework/FxImageFilter.h"

/// Renders open/close.
class FxImageFilterOpen : public FxImageFilter {
public:
    explicit FxImageFilterOpen(int instanceId);

protected:
    HkImage* process(HkImage* image, const ParameterValues& values) override;
};
