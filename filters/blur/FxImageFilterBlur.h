#pragma once

#include "framework/FxImageFilter.h"

/// Renders blur and enhance.
class FxImageFilterBlur : public FxImageFilter {
public:
    explicit FxImageFilterBlur(int instanceId);

protected:
    HkImage* process(HkImage* image, const ParameterValues& values) override;
};
