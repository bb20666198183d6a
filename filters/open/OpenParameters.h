#pragma once

#include "filters/morphology/SignedMorphology.h"

enum { OpenTypeId = 2006 };
