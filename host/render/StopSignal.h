#pragma once

#include "host/render/ExitCode.h"

namespace render {

/// Turns SIGHUP, SIGINT, SIGQUIT and SIGTERM into a wish to stop, from installation to the end of
/// the process. The second SIGINT or SIGQUIT from an impatient keyboard ends it at once. A signal
/// that whoever started the process has chosen to ignore stays ignored.
class StopSignal {
public:
    static void install();

    /// Whether a signal has come. May be asked from any thread.
    static bool requested();

    /// 128 + the number of the signal that came first; Done when none has.
    static ExitCode exitCode();
};

}  // namespace render
