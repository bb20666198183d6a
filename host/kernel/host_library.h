#pragma once

#include <string>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// The path of a library that stands in the folder of the host's libraries, wherever that is.
FXKERNELAPI_EXPORT std::string hostLibraryPath(const std::string& fileName);
