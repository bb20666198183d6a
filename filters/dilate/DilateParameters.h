#pragma once

#include "filters/morphology/SignedMorphology.h"

enum { DilateTypeId = 2007 };
