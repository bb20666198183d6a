#include "filters/open/FxImageFilterOpen.h"

#include "filters/open/OpenParameters.h"

namespace {

/// Without overflow for the least of all integers.
unsigned int magnitude(int amount) {
    const unsigned int bits = static_cast<unsigned int>(amount);
    return amount < 0 ? 0u - bits : bits;
}

}  // namespace

FxImageFilterOpen::FxImageFilterOpen(int instanceId)
    : FxImageFilter(OpenParameters::TypeId, instanceId) {}

HkImage* FxImageFilterOpen::process(HkImage* image, const ParameterValues& values) {
    // Positive opens and negative closes, although the page is labelled the other way round:
    // documents made so far rely on it, and so do the users' hands.
    const int amount = values.toInt(SignedMorphologyParameters::Amount);
    if (amount > 0)
        bestEffort(processor().open(image, magnitude(amount), nullptr));
    else if (amount < 0)
        bestEffort(processor().close(image, magnitude(amount), nullptr));
    return image;
}
