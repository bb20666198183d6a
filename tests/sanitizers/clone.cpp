// Linked into thread sanitizer builds of programs that start processes. Qt 6.4 starts them with a
// clone() that shares the parent's memory until the child executes, and the sanitizer then takes
// the parent for the child of a fork: it refuses new threads, or (die_after_fork=0) no longer sees
// what the starting thread does. A plain fork() it understands.
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

extern "C" __attribute__((visibility("default"))) int clone(int (*work)(void*), void* /*stack*/,
                                                            int flags, void* argument, ...) {
    if (!(flags & CLONE_VFORK)) {
        errno = ENOSYS;
        return -1;
    }
    va_list rest;
    va_start(rest, argument);
    int* const processHandle = va_arg(rest, int*);
    va_end(rest);
    const pid_t child = fork();
    if (child == 0) _exit(work(argument));
    if (child > 0 && (flags & CLONE_PIDFD))
        *processHandle = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    return child;
}
