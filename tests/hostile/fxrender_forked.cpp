// fxrender for hostile.py, thousands of times: each run is forked off this process, as loading the
// libraries takes longer than what is tried.
//
// A line of standard input is a run: the folder it is to work in, the file for its messages, and
// its arguments, with tabs between them. Standard output gets a line for each: the exit code, or
// minus the signal that killed it, and the seconds of processor time.

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "host/render/Fxrender.h"
#include "host/render/Process.h"

namespace {

void limit(int resource, rlim_t most) {
    const rlimit both{most, most};
    setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

void redirect(int descriptor, const char* path) {
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC, 0600);
    dup2(file, descriptor);
    close(file);
}

[[noreturn]] void beProgram(const std::vector<std::string>& words) {
    const rlim_t addressSpace = rlim_t{1} << 30, seconds = 20;
    limit(RLIMIT_AS, addressSpace);
    limit(RLIMIT_CPU, seconds);
    limit(RLIMIT_CORE, 0);
    redirect(STDIN_FILENO, "/dev/null");
    redirect(STDOUT_FILENO, "/dev/null");
    redirect(STDERR_FILENO, words.at(1).c_str());
    if (chdir(words.at(0).c_str()) != 0) std::_Exit(127);
    render::prepareProcess();
    const int code = render::runFxrender({words.begin() + 2, words.end()});
    std::fflush(nullptr);
    std::_Exit(code);
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main() {
    for (std::string line; std::getline(std::cin, line);) {
        std::vector<std::string> words;
        std::istringstream in(line);
        for (std::string word; std::getline(in, word, '\t');) words.push_back(word);
        const pid_t child = fork();
        if (child == 0) beProgram(words);
        int status = 0;
        rusage usage{};
        if (child < 0 || wait4(child, &status, 0, &usage) != child) return 1;
        std::printf("%d %.3f\n", WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status),
                    seconds(usage.ru_utime) + seconds(usage.ru_stime));
        std::fflush(stdout);
    }
    return 0;
}
