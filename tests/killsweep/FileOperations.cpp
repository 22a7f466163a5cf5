#include "FileOperations.h"

// None of the headers that declare the functions below: their declarations promise what a definition here cannot.
#include <dlfcn.h>
#include <sys/types.h>

#include <csignal>
#include <cstdarg>

namespace
{
constexpr int CREATES = 0100;     // O_CREAT
constexpr int TRUNCATES = 01000;  // O_TRUNC

int* operations = nullptr;
int fatalOperation = 0;

void Step()
{
    if (operations != nullptr && ++*operations == fatalOperation) {
        raise(SIGKILL);
    }
}

void StepIfChanging(int openFlags)
{
    if ((openFlags & (CREATES | TRUNCATES)) != 0) {
        Step();
    }
}
}  // namespace

namespace FileOperations
{
void Watch(int* counter, int killBefore)
{
    *counter = 0;
    operations = counter;
    fatalOperation = killBefore;
}
}  // namespace FileOperations

#define EXPORTED extern "C" __attribute__((visibility("default")))
#define NEXT(name) reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

#define WATCH(result, name, parameters, arguments) \
    EXPORTED result name parameters                \
    {                                              \
        static const auto next = NEXT(name);       \
        Step();                                    \
        return next arguments;                     \
    }

WATCH(ssize_t, write, (int file, const void* data, size_t size), (file, data, size))
WATCH(ssize_t, pwrite, (int file, const void* data, size_t size, off_t at), (file, data, size, at))
WATCH(ssize_t, pwrite64, (int file, const void* data, size_t size, off64_t at), (file, data, size, at))
WATCH(ssize_t, writev, (int file, const struct iovec* data, int count), (file, data, count))
WATCH(ssize_t, sendfile, (int to, int from, off_t* at, size_t size), (to, from, at, size))
WATCH(int, ftruncate, (int file, off_t size), (file, size))
WATCH(int, ftruncate64, (int file, off64_t size), (file, size))
WATCH(int, fchmod, (int file, mode_t mode), (file, mode))
WATCH(int, mkdir, (const char* path, mode_t mode), (path, mode))
WATCH(int, rmdir, (const char* path), (path))
WATCH(int, unlink, (const char* path), (path))
WATCH(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags))
WATCH(int, remove, (const char* path), (path))
WATCH(int, rename, (const char* from, const char* to), (from, to))
WATCH(int, symlink, (const char* target, const char* path), (target, path))
WATCH(int, link, (const char* from, const char* to), (from, to))
WATCH(int, mkstemp, (char* name), (name))
WATCH(int, mkostemp, (char* name, int flags), (name, flags))

// What a killed process has written is the kernel's already: a sync changes nothing, and only costs time here.
EXPORTED int fsync(int)
{
    return 0;
}
EXPORTED int fdatasync(int)
{
    return 0;
}

#define WATCH_OPEN(name)                                                            \
    EXPORTED int name(const char* path, int flags, ...)                             \
    {                                                                               \
        static const auto next = NEXT(name);                                        \
        va_list arguments;                                                          \
        va_start(arguments, flags);                                                 \
        const mode_t mode = (flags & CREATES) != 0 ? va_arg(arguments, mode_t) : 0; \
        va_end(arguments);                                                          \
        StepIfChanging(flags);                                                      \
        return next(path, flags, mode);                                             \
    }

WATCH_OPEN(open)
WATCH_OPEN(open64)
