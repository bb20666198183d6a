#include "host/kernel/PluginGuard.h"

#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace {

/// What the child tells, in memory that both processes see: nothing need be sent, and nothing is
/// lost when the child ends. The child finds it by the number of its file in the environment.
struct Diary {
    enum State : int { NotTouched, Loading, Loaded, Finished };
    std::atomic<int> state{NotTouched};
    int code = 0;  ///< of the program, once it has finished
    char step[300] = "";
};

constexpr const char* kDiaryVariable = "FX_PLUGIN_GUARD";

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

/// Ends the child before the exit handlers of others run, which may pull down what a thread still
/// works with.
void endAtOnce(int code, void*) {
    if (g_diary->state != Diary::Finished) _exit(code);
}

[[noreturn]] void fail(int error) {
    throw std::system_error(error, std::generic_category(),
                            "no process for the plug-in can be started");
}

Diary* mapDiary(int file) {
    void* const shared = mmap(nullptr, sizeof(Diary), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (shared == MAP_FAILED) fail(errno);
    return static_cast<Diary*>(shared);
}

int runChild(int diaryFile, const std::function<int()>& program) {
    g_diary = mapDiary(diaryFile);
    close(diaryFile);
    on_exit(endAtOnce, nullptr);
    g_diary->code = program();
    g_diary->state = Diary::Finished;
    return g_diary->code;
}

/// The words of the command line of this process.
std::vector<std::string> ownArguments() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');) words.push_back(word);
    return words;
}

/// The environment of the child.
std::vector<std::string> environmentWith(const std::string& entry) {
    std::vector<std::string> entries;
    for (char** one = environ; *one; ++one) entries.emplace_back(*one);
    entries.push_back(entry);
    return entries;
}

/// As exec() takes them.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// The file of this program by its name, which becomes that of the process, or by a name that
/// works after the file was replaced.
std::string ownFile() {
    std::array<char, PATH_MAX + 1> name{};
    const char* const link = "/proc/self/exe";
    return readlink(link, name.data(), name.size() - 1) > 0 && access(name.data(), X_OK) == 0
               ? name.data()
               : link;
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
    // Signals are forwarded at once here, but only afterwards in waitpid() under the thread
    // sanitizer.
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    if (handle >= 0) {
        pollfd ended = {handle, POLLIN, 0};
        while (poll(&ended, 1, -1) == -1 && errno == EINTR) {
        }
        close(handle);
    }
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

[[noreturn]] void reportEnding(const QString& file, const QString& step, bool isLoading,
                               int status) {
    const QString advice = tr("report it to the maker of the plug-in");
    const QString text =
        isLoading
            ? tr("cannot load plug-in %1: %2: %3; %4").arg(file, step, endingText(status), advice)
        : !step.isEmpty() ? tr("plug-in %1: %2: %3; %4").arg(file, step, endingText(status), advice)
                          : tr("plug-in %1: %2 while its filters were in use; %3")
                                .arg(file, endingText(status), advice);
    throw PluginEndedProgram(text.toStdString());
}

/// The child, with the signals blocked as in `mask` once it runs the program; -1 with errno.
pid_t startChild(int diaryFile, const sigset_t& mask) {
    // All that takes memory comes before fork(): in the child only exec() is left to do.
    std::vector<std::string> words = ownArguments();
    std::vector<std::string> environment =
        environmentWith(std::string(kDiaryVariable) + '=' + std::to_string(diaryFile));
    const std::vector<char*> argv = pointersTo(words);
    const std::vector<char*> envp = pointersTo(environment);
    const std::string file = ownFile();
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child != 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent) {  // else it was gone before that
        sigprocmask(SIG_SETMASK, &mask, nullptr);
        execve(file.c_str(), argv.data(), envp.data());
    }
    _exit(EXIT_FAILURE);
}

}  // namespace

int runGuarded(const QString& pluginFile, const std::function<int()>& program) {
    if (const char* const given = std::getenv(kDiaryVariable)) {
        const int file = std::atoi(given);
        unsetenv(kDiaryVariable);  // not for the programs that this one starts
        return runChild(file, program);
    }

    const int file = memfd_create("plug-in diary", 0);
    if (file < 0 || ftruncate(file, sizeof(Diary)) != 0) fail(errno);
    const Diary& diary = *new (mapDiary(file)) Diary;
    signal(SIGCHLD, SIG_DFL);
    sigset_t forwarded, before;
    sigemptyset(&forwarded);
    for (const int number : kForwarded) sigaddset(&forwarded, number);
    sigprocmask(SIG_BLOCK, &forwarded, &before);
    const pid_t child = startChild(file, before);
    const int error = errno;
    if (child > 0) {
        g_child = child;
        forwardSignals();
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    close(file);
    if (child < 0) fail(error);

    const int status = waitFor(child);
    const int state = diary.state;
    if (WIFSIGNALED(status) &&
        (state == Diary::NotTouched || (g_received & 1 << WTERMSIG(status)) != 0))
        endBySignal(WTERMSIG(status));
    // What a library does when all is done, and while it is unloaded, spoils nothing.
    if (state == Diary::Finished && WIFSIGNALED(status)) return diary.code;
    if (state == Diary::NotTouched || state == Diary::Finished) return WEXITSTATUS(status);
    reportEnding(pluginFile, diary.step, state == Diary::Loading, status);
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
