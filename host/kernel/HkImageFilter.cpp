#include "framework/contract/FxKernelApi/HkImageFilter.h"

HkImageFilter::HkImageFilter(int instance) : objectId(instance) {}

HkImageFilter::~HkImageFilter() = default;
