#include "host/render/Process.h"
#include "host/render/demo/Demo.h"

int main(int argc, char** argv) {
    render::prepareProcess();
    return render::runFxdemo(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
