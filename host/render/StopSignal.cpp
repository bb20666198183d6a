#include "host/render/StopSignal.h"

#include <csignal>

#include <atomic>

namespace render {

namespace {

std::atomic<int> g_signal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may not take a lock");

void remember(int signalNumber) {
    int none = 0;
    g_signal.compare_exchange_strong(none, signalNumber);
}

}  // namespace

void StopSignal::install() {
    for (const int signalNumber : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        struct sigaction current = {};
        sigaction(signalNumber, nullptr, &current);
        if (current.sa_handler == SIG_IGN) continue;
        struct sigaction action = {};
        action.sa_handler = remember;
        action.sa_flags = SA_RESTART;  // a read or write under way is part of the current frame
        if (signalNumber == SIGINT || signalNumber == SIGQUIT)
            action.sa_flags |= static_cast<int>(SA_RESETHAND);
        sigemptyset(&action.sa_mask);
        sigaction(signalNumber, &action, nullptr);
    }
}

bool StopSignal::requested() {
    return g_signal.load() != 0;
}

ExitCode StopSignal::exitCode() {
    const int signalNumber = g_signal.load();
    return signalNumber == 0 ? Done : static_cast<ExitCode>(128 + signalNumber);
}

}  // namespace render
