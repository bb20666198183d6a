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
#include <mutex>
#include <string>
#include <vector>

namespace {

/// What the child tells, in memory that both processes see: nothing need be sent, and nothing is
/// lost when the child ends. The child finds it by the number of its file in the environment.
struct Diary {
    enum State : int { NotTouched, Loading, Loaded, Finished };
    std::atomic<int> state{NotTouched};
    std::atomic<int> steps{0};      ///< that have begun
    std::atomic<int> questions{0};  ///< that wait for an answer, which must come soon
    std::atomic<int> execError{0};  ///< why the program could not be started; 0: it was
    int code = 0;                   ///< of the program, once it has finished
    char step[300] = "";
};

constexpr const char* kDiaryVariable = "FX_PLUGIN_GUARD";
constexpr const char* kSecondsVariable = "FX_PLUGIN_SECONDS";

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
    throw NoPluginProcess(tr("no process for the plug-in can be started: %1; close other programs "
                             "and try again")
                              .arg(QString::fromLocal8Bit(std::strerror(error)))
                              .toStdString());
}

/// How long one step of the plug-in may take.
int limitInSeconds() {
    const int given = qEnvironmentVariableIntValue(kSecondsVariable);
    return given > 0 ? given : kUsualPluginSeconds;
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

/// How the child ended; it is killed when a step takes longer than `limit`, and `isLate` says so.
int waitFor(pid_t child, const Diary& diary, int limit, bool& isLate) {
    int status = 0, step = 0, seconds = 0;
    // Signals are forwarded at once in poll(), but only afterwards in a waitpid() that waits under
    // the thread sanitizer. Without a handle poll() does nothing but wait.
    pollfd ended = {static_cast<int>(syscall(SYS_pidfd_open, child, 0)), POLLIN, 0};
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (poll(&ended, 1, 1000) != 0) continue;
        // Seconds are counted, not measured: those while both processes are stopped are none.
        const bool isLimited = diary.questions > 0 || diary.state == Diary::Finished;
        if (!isLimited || step != diary.steps) {
            step = diary.steps;
            seconds = 0;
        } else if (++seconds == limit) {
            kill(child, SIGKILL);
            isLate = true;
        }
    }
    if (ended.fd >= 0) close(ended.fd);
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

[[noreturn]] void reportEnding(const QString& file, const Diary& diary, const QString& ending,
                               const QString& remedy) {
    const QString step = diary.step;
    const QString advice = tr("report it to the maker of the plug-in") + remedy;
    const QString text =
        diary.state == Diary::Loading
            ? tr("cannot load plug-in %1: %2: %3; %4").arg(file, step, ending, advice)
        : !step.isEmpty()
            ? tr("plug-in %1: %2: %3; %4").arg(file, step, ending, advice)
            : tr("plug-in %1: %2 while its filters were in use; %3").arg(file, ending, advice);
    throw PluginEndedProgram(text.toStdString());
}

/// The child, with the signals blocked as in `mask` once it runs the program; -1 with errno.
pid_t startChild(Diary& diary, int diaryFile, const sigset_t& mask) {
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
        diary.execError = errno;
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
    Diary& diary = *new (mapDiary(file)) Diary;
    signal(SIGCHLD, SIG_DFL);
    sigset_t forwarded, before;
    sigemptyset(&forwarded);
    for (const int number : kForwarded) sigaddset(&forwarded, number);
    sigprocmask(SIG_BLOCK, &forwarded, &before);
    const pid_t child = startChild(diary, file, before);
    const int error = errno;
    if (child > 0) {
        g_child = child;
        forwardSignals();
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    close(file);
    if (child < 0) fail(error);

    const int limit = limitInSeconds();
    bool isLate = false;
    const int status = waitFor(child, diary, limit, isLate);
    const int state = diary.state;
    if (diary.execError != 0) fail(diary.execError);
    if (WIFSIGNALED(status) &&
        (state == Diary::NotTouched || (g_received & 1 << WTERMSIG(status)) != 0))
        endBySignal(WTERMSIG(status));
    // What a library does when all is done, and while it is unloaded, spoils nothing.
    if (state == Diary::Finished && WIFSIGNALED(status)) return diary.code;
    if (state == Diary::NotTouched || state == Diary::Finished) return WEXITSTATUS(status);
    if (isLate)
        reportEnding(pluginFile, diary, tr("it did not return within %1 s").arg(limit),
                     tr(", or set %1 to more seconds").arg(QLatin1String(kSecondsVariable)));
    reportEnding(pluginFile, diary, endingText(status), QString());
}

void notePluginStep(const QString& step) {
    if (!g_diary) return;
    notePluginUse(step);
    ++g_diary->steps;
    g_diary->questions = 1;
    g_diary->state = Diary::Loading;
}

void notePluginUse(const QString& use) {
    if (!g_diary) return;
    static std::mutex mutex;  // render threads ask, too
    const std::lock_guard<std::mutex> lock(mutex);
    try {
        std::snprintf(g_diary->step, sizeof g_diary->step, "%s", qUtf8Printable(use));
    } catch (const std::bad_alloc&) {  // what was there before stays
    }
}

void notePluginLoaded() {
    if (!g_diary) return;
    notePluginUse(QString());
    on_exit(endAtOnce, nullptr);  // before what the library has registered since
    g_diary->questions = 0;
    g_diary->state = Diary::Loaded;
}

PluginQuestion::PluginQuestion(const QString& question) {
    if (!g_diary) return;
    notePluginUse(question);
    ++g_diary->steps;
    ++g_diary->questions;
}

PluginQuestion::~PluginQuestion() {
    if (!g_diary) return;
    if (--g_diary->questions == 0) notePluginUse(QString());
}
