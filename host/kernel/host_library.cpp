#include "host/kernel/host_library.h"

#include <dlfcn.h>

std::string hostLibraryPath(const std::string& fileName) {
    static const char kPlace = 0;  // lies in the library that this is a part of
    Dl_info info = {};
    const std::string own = dladdr(&kPlace, &info) != 0 ? info.dli_fname : "";
    return own.substr(0, own.rfind('/') + 1) + fileName;
}
