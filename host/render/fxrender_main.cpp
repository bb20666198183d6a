#include "host/render/Fxrender.h"

int main(int argc, char** argv) {
    return render::runFxrender(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
