// SPDX-License-Identifier: Apache-2.0
// Loaded before a program (LD_PRELOAD), lets one allocation of the whole process fail, or its threads not start:
//   QX_FAIL_ALLOCATION=N  the N-th call of malloc, calloc, realloc or one of the aligned ones answers null
//   QX_FAIL_THREAD=N      the N-th thread and all later ones cannot be started
//   QX_FAIL_REPORT=FILE   is made when a failure has been let happen; holds the stack of it and that of a crash
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}

namespace {

std::atomic<long> allocations{0}, threads{0};
std::atomic<bool> in_main{false};
[[gnu::tls_model("initial-exec")]] thread_local bool reporting = false;  // what a report allocates does not count

long number(const char* name) {
    const char* text = environ == nullptr ? nullptr : std::getenv(name);
    return text == nullptr ? 0 : std::atol(text);
}

void write_report(const char* what) {
    const int error = errno;
    const char* path = std::getenv("QX_FAIL_REPORT");
    const int file = path == nullptr ? -1 : ::open(path, O_WRONLY | O_CREAT | O_APPEND, 0666);
    if (file >= 0) {
        reporting = true;
        void* frames[64];
        const int depth = ::backtrace(frames, 64);
        if (::write(file, what, std::strlen(what)) > 0) ::backtrace_symbols_fd(frames, depth, file);
        ::close(file);
        reporting = false;
    }
    errno = error;
}

bool fails() {
    static std::atomic<long> wanted{-1};
    if (reporting || environ == nullptr) return false;  // the loader's own first steps come before the environment
    if (wanted.load() < 0) wanted.store(number("QX_FAIL_ALLOCATION"));
    if (allocations.fetch_add(1) + 1 != wanted.load()) return false;
    write_report(in_main ? "= failed\n" : "= failed before main\n");
    errno = ENOMEM;
    return true;
}

void crashed(int signal) {
    write_report("= crashed\n");
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

template <class Function> Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

using Main = int (*)(int, char**, char**);
Main real_main;
int noted_main(int argc, char** argv, char** environment) {
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) std::signal(signal, crashed);
    in_main = true;
    return real_main(argc, argv, environment);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size) { return fails() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) { return fails() ? nullptr : __libc_calloc(count, size); }
void* realloc(void* block, std::size_t size) { return fails() ? nullptr : __libc_realloc(block, size); }
void* memalign(std::size_t alignment, std::size_t size) { return fails() ? nullptr : __libc_memalign(alignment, size); }
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    void* const found = memalign(alignment, size);
    if (found == nullptr) return ENOMEM;
    *block = found;
    return 0;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*), void* argument) {
    static const auto real = next<decltype(&pthread_create)>("pthread_create");
    static const long first = number("QX_FAIL_THREAD");
    if (first == 0 || threads.fetch_add(1) + 1 < first) return real(thread, attributes, routine, argument);
    write_report("= failed\n");
    return EAGAIN;
}

int __libc_start_main(Main main, int argc, char** argv, int (*init)(int, char**, char**), void (*fini)(),
                      void (*loader_fini)(), void* stack_end) {
    real_main = main;
    return next<decltype(&__libc_start_main)>("__libc_start_main")(noted_main, argc, argv, init, fini, loader_fini,
                                                                   stack_end);
}
}
#pragma GCC visibility pop
