#include "host/render/Process.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace render {

void prepareProcess() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // open() takes the lowest number that is free. The wrong direction: reading and writing
        // fail as they do on a closed stream, so that lost results are noticed.
        const int direction = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (fcntl(descriptor, F_GETFD) == -1) static_cast<void>(open("/dev/null", direction));
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace render
