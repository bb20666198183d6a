#include <cstdio>
#include <new>

#include "host/render/ExitCode.h"
#include "host/render/Fxrender.h"
#include "host/render/Process.h"

int main(int argc, char** argv) {
    render::prepareProcess();
    try {
        return render::runFxrender(
            std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    } catch (const std::bad_alloc&) {  // for the arguments themselves
        std::fprintf(stderr, "fxrender: %s\n", render::kNoMemoryText);
        return render::TryAgainLater;
    }
}
