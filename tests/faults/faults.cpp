// Makes one call of the program it is preloaded into fail, as a full heap or a full disk would.
//
//   FX_FAULT  CALL NUMBER [ERRNO]: the call, counted from 1, that fails. CALL is "memory" (every
//             function that allocates) or one of write, fsync, rename, open, linkat, ftruncate,
//             fork, execve, which stand for their kin too. A number of 0 fails none.
//   FX_COUNT  a file that gets how many such calls there were between the beginning and the end of
//             main.
//
// Only calls from the program, its libraries, those of the picture formats, OpenCV and the C++
// library count. The toolkit, the C library and what they bring end the program when they find no
// memory, whoever uses them; what becomes of their own files is not ours either.

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>

namespace {

struct Plan {
    char call[16] = "";
    long number = 0;
    int error = 0;
};

Plan g_plan;
bool g_isMemory = false;
std::atomic<bool> g_isArmed{false};
std::atomic<long> g_calls{0};

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool isWatched(void* caller) {
    dl_find_object found;
    if (_dl_find_object(caller, &found) != 0) return false;
    const char* const file = found.dlfo_link_map->l_name;
    if (!file || !*file) return true;  // the program itself
    const char* const slash = std::strrchr(file, '/');
    const char* const name = slash ? slash + 1 : file;
    for (const char* watched :
         {"libFxKernelApi", "libImageProcessor", "libBasicFiltersPlugin", "libopencv_", "libstdc++",
          "libpng", "libtiff", "libjpeg", "libz.", "libdeflate"})
        if (std::strncmp(name, watched, std::strlen(watched)) == 0) return true;
    return false;
}

bool isNext(void* caller) {
    return isWatched(caller) && ++g_calls == g_plan.number;
}

bool failsMemory(void* caller) {
    return g_isArmed && g_isMemory && isNext(caller);
}

bool failsCall(const char* call, void* caller) {
    if (!g_isArmed || g_isMemory || std::strcmp(call, g_plan.call) != 0 || !isNext(caller))
        return false;
    errno = g_plan.error;
    return true;
}

/// What no heap has, asked of the real one: whoever watches it sees the failure.
const std::size_t kTooMuch = SIZE_MAX / 2;

void* realMalloc(std::size_t size) {
    static const auto real = next<void* (*)(std::size_t)>("malloc");
    return real(size);
}

void readPlan() {
    const char* const text = std::getenv("FX_FAULT");
    if (!text) return;
    char error[16] = "";
    std::sscanf(text, "%15s %ld %15s", g_plan.call, &g_plan.number, error);
    g_isMemory = std::strcmp(g_plan.call, "memory") == 0;
    g_plan.error = std::strcmp(error, "ENOSPC") == 0   ? ENOSPC
                   : std::strcmp(error, "EDQUOT") == 0 ? EDQUOT
                   : std::strcmp(error, "ENOMEM") == 0 ? ENOMEM
                                                       : EIO;
}

void writeCount() {
    const char* const file = std::getenv("FX_COUNT");
    if (!file) return;
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%ld\n", g_calls.load());
    const int descriptor = ::open(file, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    static_cast<void>(!::write(descriptor, text, static_cast<std::size_t>(length)));
    ::close(descriptor);
}

using Main = int (*)(int, char**, char**);
Main g_main = nullptr;

int armedMain(int argc, char** argv, char** environment) {
    readPlan();
    // Looked up now: the look-up may allocate.
    std::free(realMalloc(1));
    std::free(std::calloc(1, 1));
    std::free(std::realloc(std::malloc(1), 2));
    void* aligned = nullptr;
    static_cast<void>(!posix_memalign(&aligned, 64, 64));
    std::free(aligned);
    g_isArmed = true;
    const int code = g_main(argc, argv, environment);
    g_isArmed = false;
    writeCount();
    return code;
}

}  // namespace

#pragma GCC visibility push(default)

extern "C" {

int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*rtldFini)(), void* stackEnd) {
    g_main = main;
    const auto real = next<decltype(&__libc_start_main)>("__libc_start_main");
    return real(armedMain, argc, argv, init, fini, rtldFini, stackEnd);
}

void* malloc(std::size_t size) noexcept {
    return realMalloc(failsMemory(__builtin_return_address(0)) ? kTooMuch : size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    static const auto real = next<void* (*)(std::size_t, std::size_t)>("calloc");
    return failsMemory(__builtin_return_address(0)) ? real(1, kTooMuch) : real(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
    static const auto real = next<void* (*)(void*, std::size_t)>("realloc");
    return real(block, failsMemory(__builtin_return_address(0)) ? kTooMuch : size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    static const auto real = next<int (*)(void**, std::size_t, std::size_t)>("posix_memalign");
    return real(block, alignment, failsMemory(__builtin_return_address(0)) ? kTooMuch : size);
}

ssize_t write(int file, const void* bytes, std::size_t count) {
    static const auto real = next<ssize_t (*)(int, const void*, std::size_t)>("write");
    return failsCall("write", __builtin_return_address(0)) ? -1 : real(file, bytes, count);
}
int fsync(int file) {
    static const auto real = next<int (*)(int)>("fsync");
    return failsCall("fsync", __builtin_return_address(0)) ? -1 : real(file);
}
int fdatasync(int file) {
    static const auto real = next<int (*)(int)>("fdatasync");
    return failsCall("fsync", __builtin_return_address(0)) ? -1 : real(file);
}
int rename(const char* from, const char* to) noexcept {
    static const auto real = next<int (*)(const char*, const char*)>("rename");
    return failsCall("rename", __builtin_return_address(0)) ? -1 : real(from, to);
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    static const auto real = next<int (*)(int, const char*, int, const char*)>("renameat");
    return failsCall("rename", __builtin_return_address(0)) ? -1
                                                            : real(fromFolder, from, toFolder, to);
}
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    static const auto real = next<int (*)(int, const char*, int, const char*, int)>("linkat");
    return failsCall("linkat", __builtin_return_address(0))
               ? -1
               : real(fromFolder, from, toFolder, to, flags);
}
int ftruncate(int file, off_t length) noexcept {
    static const auto real = next<int (*)(int, off_t)>("ftruncate");
    return failsCall("ftruncate", __builtin_return_address(0)) ? -1 : real(file, length);
}
pid_t fork() noexcept {
    static const auto real = next<pid_t (*)()>("fork");
    return failsCall("fork", __builtin_return_address(0)) ? -1 : real();
}
int execve(const char* path, char* const* argv, char* const* envp) noexcept {
    static const auto real = next<int (*)(const char*, char* const*, char* const*)>("execve");
    return failsCall("execve", __builtin_return_address(0)) ? -1 : real(path, argv, envp);
}
int open(const char* path, int flags, ...) {
    static const auto real = next<int (*)(const char*, int, ...)>("open");
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return failsCall("open", __builtin_return_address(0)) ? -1 : real(path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    static const auto real = next<int (*)(int, const char*, int, ...)>("openat");
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return failsCall("open", __builtin_return_address(0)) ? -1 : real(folder, path, flags, mode);
}
}

void* operator new(std::size_t size) {
    void* const block = realMalloc(failsMemory(__builtin_return_address(0)) ? kTooMuch : size);
    if (!block) throw std::bad_alloc();
    return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return realMalloc(failsMemory(__builtin_return_address(0)) ? kTooMuch : size);
}
#pragma GCC visibility pop
