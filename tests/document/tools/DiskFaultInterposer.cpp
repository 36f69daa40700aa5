// Preloaded into the document helper to put faults into the calls that store something on the
// disk (create, write, sync, set an attribute, rename) for files of one folder. They are counted
// from 0; from the chosen one on the disk is full (the first failing write still stores half of
// its bytes, as a filling disk does, and every later call fails with ENOSPC), or it is full for
// that one call only (another program freed space just after), or the process is killed there.
//   FOLIDOC_FAULT_FOLDER  the folder whose files count
//   FOLIDOC_FAULT_AT      the first call that fails; unset: none fails
//   FOLIDOC_FAULT_KIND    "full", "once" or "kill"
// At a normal exit it prints "disk writes: N" on standard error.

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <dlfcn.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

std::atomic<long> calls { 0 };

template <class Function> Function next(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

bool inFolder(const char *path)
{
    const char *folder = std::getenv("FOLIDOC_FAULT_FOLDER");
    if (!folder || !path)
        return false;
    const size_t length = std::strlen(folder);
    return std::strncmp(path, folder, length) == 0 && (path[length] == '/' || path[length] == 0);
}

bool fdInFolder(int fd)
{
    char link[64];
    char path[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t length = ::readlink(link, path, sizeof path - 1);
    if (length <= 0)
        return false;
    path[length] = 0;
    return inFolder(path);
}

enum class Fault { None, First, Again };

// Counts one call that stores something, and tells whether it fails.
Fault count()
{
    const long index = calls.fetch_add(1);
    const char *at = std::getenv("FOLIDOC_FAULT_AT");
    if (!at || index < std::atol(at))
        return Fault::None;
    const char *kind = std::getenv("FOLIDOC_FAULT_KIND");
    if (kind && std::strcmp(kind, "kill") == 0)
        ::kill(::getpid(), SIGKILL);
    if (index == std::atol(at))
        return Fault::First;
    return kind && std::strcmp(kind, "once") == 0 ? Fault::None : Fault::Again;
}

struct Report
{
    ~Report()
    {
        char line[64];
        const int length = std::snprintf(line, sizeof line, "disk writes: %ld\n", calls.load());
        (void)!next<ssize_t (*)(int, const void *, size_t)>("write")(2, line, size_t(length));
    }
} report;

} // namespace

extern "C" {

ssize_t write(int fd, const void *buffer, size_t size)
{
    static const auto real = next<ssize_t (*)(int, const void *, size_t)>("write");
    if (!fdInFolder(fd))
        return real(fd, buffer, size);
    switch (count()) {
    case Fault::None:
        return real(fd, buffer, size);
    case Fault::First:
        if (size > 1)
            return real(fd, buffer, size / 2);
        [[fallthrough]];
    case Fault::Again:
        break;
    }
    errno = ENOSPC;
    return -1;
}

#define FOLIDOC_FAULT(result, name, parameters, arguments, inside)                                 \
    result name parameters                                                                         \
    {                                                                                              \
        static const auto real = next<result(*) parameters>(#name);                                \
        if ((inside) && count() != Fault::None) {                                                  \
            errno = ENOSPC;                                                                        \
            return -1;                                                                             \
        }                                                                                          \
        return real arguments;                                                                     \
    }

FOLIDOC_FAULT(int, fsync, (int fd), (fd), fdInFolder(fd))
FOLIDOC_FAULT(int, fdatasync, (int fd), (fd), fdInFolder(fd))
FOLIDOC_FAULT(int, mkostemp, (char *pattern, int flags), (pattern, flags), inFolder(pattern))
FOLIDOC_FAULT(int, mkostemp64, (char *pattern, int flags), (pattern, flags), inFolder(pattern))
FOLIDOC_FAULT(int, rename, (const char *from, const char *to), (from, to), inFolder(to))
FOLIDOC_FAULT(int, fsetxattr, (int fd, const char *name, const void *value, size_t size, int flags),
    (fd, name, value, size, flags), fdInFolder(fd))
FOLIDOC_FAULT(int, setxattr,
    (const char *path, const char *name, const void *value, size_t size, int flags),
    (path, name, value, size, flags), inFolder(path))
FOLIDOC_FAULT(int, lsetxattr,
    (const char *path, const char *name, const void *value, size_t size, int flags),
    (path, name, value, size, flags), inFolder(path))
}
