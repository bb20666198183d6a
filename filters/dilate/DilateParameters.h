#pragma once

#include "filters/morphology/SignedMorphology.h"

namespace DilateParameters {

enum { TypeId = 2007 };

}  // namespace DilateParameters
