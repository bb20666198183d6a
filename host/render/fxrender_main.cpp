#include "host/render/Fxrender.h"
#include "host/render/Process.h"

int main(int argc, char** argv) {
    render::prepareProcess();
    return render::runFxrender(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
