#include "host/kernel/PluginGuard.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace {

/// What the child tells, in memory that both processes see: nothing need be sent, and nothing is
/// lost when the child ends.
struct Diary {
    enum State : int { NotTouched, Loading, Loaded, Finished };
    std::atomic<int> state{NotTouched};
    int code = 0;
    char step[300] = "";
};

Diary* g_diary = nullptr;  ///< null: this process is not guarded

const int kForwarded[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};
volatile pid_t g_child = 0;
volatile sig_atomic_t g_received = 0;  ///< a bit for each signal

QString tr(const char* text) {
    return QCoreApplication::translate("PluginGuard", text);
}

void forward(int number, siginfo_t* info, void*) {
    g_received = g_received | 1 << number;
    // A terminal tells all processes in front of it by itself.
    if (info->si_code <= 0) kill(g_child, number);
}

/// Ends the child before the exit handlers of others run, which may wait for threads that go on.
void endAtOnce(int code, void*) {
    if (g_diary->state != Diary::Finished) _exit(code);
}

[[noreturn]] void runChild(pid_t parent, const std::function<int()>& program) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(EXIT_FAILURE);  // it was gone before that
    on_exit(endAtOnce, nullptr);
    g_diary->code = program();
    g_diary->state = Diary::Finished;
    std::fflush(nullptr);
    // Not exit(): libraries that started threads when they were loaded would wait for them, and
    // only the parent has them.
    _exit(g_diary->code);
}

/// Lets the signals through to the child from now on.
void forwardSignals() {
    for (const int number : kForwarded) {
        struct sigaction current = {};
        sigaction(number, nullptr, &current);
        if (current.sa_handler == SIG_IGN) continue;  // and so does the child
        struct sigaction action = {};
        action.sa_sigaction = forward;
        action.sa_flags = SA_SIGINFO | SA_RESTART;
        sigemptyset(&action.sa_mask);
        sigaction(number, &action, nullptr);
    }
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
    return status;
}

[[noreturn]] void endBySignal(int number) {
    signal(number, SIG_DFL);
    raise(number);
    _exit(128 + number);
}

QString endingText(int status) {
    if (WIFEXITED(status))
        return tr("it ended the program with exit code %1").arg(WEXITSTATUS(status));
    const int number = WTERMSIG(status);
    return tr("it ended the program with signal %1 (%2)")
        .arg(QString::number(number), QString::fromLocal8Bit(strsignal(number)));
}

[[noreturn]] void reportEnding(const QString& file, int status) {
    const QString advice = tr("report it to the maker of the plug-in");
    const QString step = QString::fromUtf8(g_diary->step);
    const QString text =
        g_diary->state == Diary::Loading
            ? tr("cannot load plug-in %1: %2: %3; %4").arg(file, step, endingText(status), advice)
        : !step.isEmpty() ? tr("plug-in %1: %2: %3; %4").arg(file, step, endingText(status), advice)
                          : tr("plug-in %1: %2 while its filters were in use; %3")
                                .arg(file, endingText(status), advice);
    throw PluginEndedProgram(text.toStdString());
}

}  // namespace

int runGuarded(const QString& pluginFile, const std::function<int()>& program) {
    void* const shared =
        mmap(nullptr, sizeof(Diary), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) throw std::system_error(errno, std::generic_category());
    g_diary = new (shared) Diary;
    std::fflush(nullptr);  // or the child would write it, too
    signal(SIGCHLD, SIG_DFL);
    sigset_t forwarded, before;
    sigemptyset(&forwarded);
    for (const int number : kForwarded) sigaddset(&forwarded, number);
    sigprocmask(SIG_BLOCK, &forwarded, &before);
    const pid_t parent = getpid();
    const pid_t child = fork();
    const int error = errno;
    if (child > 0) {
        g_child = child;
        forwardSignals();
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    if (child < 0)
        throw std::system_error(error, std::generic_category(),
                                "no process for the plug-in can be started");
    if (child == 0) runChild(parent, program);

    const int status = waitFor(child);
    const int state = g_diary->state;
    if (state == Diary::Finished) return g_diary->code;
    if (WIFSIGNALED(status) &&
        (state == Diary::NotTouched || (g_received & 1 << WTERMSIG(status)) != 0))
        endBySignal(WTERMSIG(status));
    if (state == Diary::NotTouched) return WEXITSTATUS(status);
    reportEnding(pluginFile, status);
}

void notePluginStep(const QString& step) {
    notePluginUse(step);
    if (g_diary) g_diary->state = Diary::Loading;
}

void notePluginUse(const QString& use) {
    if (g_diary) std::snprintf(g_diary->step, sizeof g_diary->step, "%s", qUtf8Printable(use));
}

void notePluginLoaded() {
    if (!g_diary) return;
    g_diary->step[0] = '\0';
    on_exit(endAtOnce, nullptr);  // before what the library has registered since
    g_diary->state = Diary::Loaded;
}
