#pragma once

#include "filters/morphology/SignedMorphology.h"

namespace OpenParameters {

enum { TypeId = 2006 };

}  // namespace OpenParameters
