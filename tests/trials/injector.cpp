// Makes allocations and system calls fail, as QV_FAULT orders (injector.h).  Each allocation or call that
// could fail is a point.  A family's points (allocations or calls) are numbered from the start.
//
// The allocation functions replace the C library's own, so that allocations of libraries can fail too.  Under
// AddressSanitizer, which replaces these functions itself, only the program's allocations fail.  Calls are
// wrapped at link time (failing_calls in CMakeLists.txt).
#include "tests/trials/injector.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <iconv.h>
#include <malloc.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

static char gFamily;    // 'a' or 'c' if points of this family can fail
static unsigned gPoint; // number of the first point that fails
static int gLasts, gError;
static unsigned gPassed; // points of the family so far
static FaultAccount gAccount;

static bool failsNow(char family, const char *name) {
    if (family != gFamily || ++gPassed < gPoint || (gLasts == 0 && gPassed > gPoint))
        return false;
    ++gAccount.fired;
    std::snprintf(gAccount.last, sizeof gAccount.last, "%s", name);
    errno = gError;
    return true;
}

// ---- Allocations ----

#ifdef FAULTS_UNDER_SANITIZER
#define OWN(name) __wrap_##name
#define BASE(name) __real_##name
#else
#define OWN(name) name
#define BASE(name) __libc_##name
#endif
extern "C" {
void *BASE(malloc)(std::size_t);
void *BASE(calloc)(std::size_t, std::size_t);
void *BASE(realloc)(void *, std::size_t);
void BASE(free)(void *);
extern const char __executable_start, etext;
}

#ifdef FAULTS_UNDER_SANITIZER // the sanitizer finds leaks itself
static void *claim(void *block, const void *) {
    return block;
}
static bool disown(void *) {
    return false;
}
constexpr std::size_t kMark = 0;
#else
// A mark in the last bytes of a block shows that the program itself, not a library, allocated it.
constexpr std::size_t kMark = sizeof(std::uintptr_t);

static std::uintptr_t *markOf(void *block) {
    return reinterpret_cast<std::uintptr_t *>(static_cast<char *>(block) + malloc_usable_size(block) - kMark);
}
static std::uintptr_t markFor(void *block) {
    return ~reinterpret_cast<std::uintptr_t>(block);
}
static void *claim(void *block, const void *caller) {
    if (block != nullptr && caller >= &__executable_start && caller < &etext) {
        *markOf(block) = markFor(block);
        ++gAccount.live;
    }
    return block;
}
static bool disown(void *block) {
    if (block == nullptr || *markOf(block) != markFor(block))
        return false;
    *markOf(block) = 0;
    --gAccount.live;
    return true;
}
#endif

#define CALLER __builtin_extract_return_addr(__builtin_return_address(0))

extern "C" {

void *OWN(malloc)(std::size_t size) {
    return failsNow('a', "malloc") ? nullptr : claim(BASE(malloc)(size + kMark), CALLER);
}
void *OWN(calloc)(std::size_t count, std::size_t bytes) {
    std::size_t size = 0;
    if (__builtin_mul_overflow(count, bytes, &size) || failsNow('a', "calloc"))
        return nullptr;
    return claim(BASE(calloc)(size + kMark, 1), CALLER);
}
void *OWN(realloc)(void *old, std::size_t size) {
    if (failsNow('a', "realloc"))
        return nullptr;
    const bool owned = disown(old);
    void *block = BASE(realloc)(old, size + kMark);
    return claim(block, owned ? &__executable_start : CALLER);
}
#ifndef FAULTS_UNDER_SANITIZER
void free(void *block) {
    disown(block);
    BASE(free)(block);
}
#endif
char *__real_strdup(const char *);
char *__wrap_strdup(const char *text) { // allocates the copy in the program, so that its leak is found
    const std::size_t size = std::strlen(text) + 1;
    void *copy = std::malloc(size);
    return copy != nullptr ? static_cast<char *>(std::memcpy(copy, text, size)) : nullptr;
}

} // extern "C"

void *operator new(std::size_t size) {
    if (void *block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    return std::malloc(size);
}
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
    return std::malloc(size);
}
void operator delete(void *block) noexcept {
    std::free(block);
}
void operator delete(void *block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void *block) noexcept {
    std::free(block);
}
void operator delete[](void *block, std::size_t) noexcept {
    std::free(block);
}

// ---- Calls ----

#define FAILING_WITH(guard, result, name, failure, parameters, arguments)                                    \
    extern "C" result __real_##name parameters;                                                              \
    extern "C" result __wrap_##name parameters;                                                              \
    result __wrap_##name parameters {                                                                        \
        if (gError != kShortRead && failsNow('c', #name))                                                    \
            return failure;                                                                                  \
        guard;                                                                                               \
        return __real_##name arguments;                                                                      \
    }
#define FAILING(...) FAILING_WITH(, __VA_ARGS__)

// Inside an account look-up no allocation fails: the C library would crash.  The look-up itself can fail.
class WithMemory {
public:
    WithMemory() : family_(std::exchange(gFamily, gFamily == 'a' ? '-' : gFamily)) {}
    ~WithMemory() { gFamily = family_; }
    WithMemory(const WithMemory &) = delete;
    WithMemory &operator=(const WithMemory &) = delete;

private:
    char family_;
};
#define LOOK_UP(name, parameters, arguments)                                                                 \
    FAILING_WITH(const WithMemory memory, int, name, errno, parameters, arguments)

FAILING(int, access, -1, (const char *path, int mode), (path, mode))
FAILING(int, fcntl, -1, (int fd, int command, long argument), (fd, command, argument))
FAILING(int, flock, -1, (int fd, int operation), (fd, operation))
FAILING(int, fstat, -1, (int fd, struct stat *status), (fd, status))
FAILING(int, fsync, -1, (int fd), (fd))
FAILING(int, ftruncate, -1, (int fd, off_t size), (fd, size))
LOOK_UP(getgrgid_r, (gid_t id, group *entry, char *room, std::size_t size, group **found),
        (id, entry, room, size, found))
FAILING(int, getgroups, -1, (int size, gid_t *groups), (size, groups))
LOOK_UP(getpwnam_r, (const char *name, passwd *entry, char *room, std::size_t size, passwd **found),
        (name, entry, room, size, found))
LOOK_UP(getpwuid_r, (uid_t id, passwd *entry, char *room, std::size_t size, passwd **found),
        (id, entry, room, size, found))
FAILING(iconv_t, iconv_open, reinterpret_cast<iconv_t>(std::intptr_t{-1}), (const char *to, const char *from),
        (to, from))
FAILING(off_t, lseek, -1, (int fd, off_t offset, int origin), (fd, offset, origin))
FAILING(int, lstat, -1, (const char *path, struct stat *status), (path, status))
FAILING(int, open, -1, (const char *path, int flags, mode_t mode), (path, flags, mode))
FAILING(DIR *, opendir, nullptr, (const char *path), (path))
FAILING(dirent *, readdir, nullptr, (DIR * directory), (directory))
FAILING(ssize_t, readlink, -1, (const char *path, char *target, std::size_t size), (path, target, size))
FAILING(int, renameat2, -1, (int from, const char *path, int to, const char *name, unsigned flags),
        (from, path, to, name, flags))
FAILING(int, stat, -1, (const char *path, struct stat *status), (path, status))
FAILING(int, uname, -1, (utsname * system), (system))
FAILING(int, unlink, -1, (const char *path), (path))

extern "C" ssize_t __real_write(int, const void *, std::size_t);
extern "C" ssize_t __wrap_write(int, const void *, std::size_t);
ssize_t __wrap_write(int fd, const void *bytes, std::size_t size) {
    if (gError == kShortRead || !failsNow('c', "write"))
        return __real_write(fd, bytes, size);
    gAccount.mute |= fd == STDERR_FILENO; // standard error can be the program's log
    return -1;
}

extern "C" ssize_t __real_read(int, void *, std::size_t);
extern "C" ssize_t __wrap_read(int, void *, std::size_t);
ssize_t __wrap_read(int fd, void *bytes, std::size_t size) {
    if (!failsNow('c', "read"))
        return __real_read(fd, bytes, size);
    return gError == kShortRead ? __real_read(fd, bytes, std::min<std::size_t>(size, 7)) : -1;
}

// ---- Start and end ----

[[gnu::constructor]] static void begin() {
    char family = 0;
    const char *order = std::getenv(kFaultVariable);
    if (order != nullptr && std::sscanf(order, "%c:%u:%d:%d", &family, &gPoint, &gLasts, &gError) == 4)
        gFamily = family;
    gAccount.live = 0;
}

// Runs after the destructors of the program's own objects.
[[gnu::destructor(101)]] static void end() {
    gFamily = 0;
    for (int fd = 0; fd < kAccountFd; ++fd)
        gAccount.descriptors += __real_fcntl(fd, F_GETFD, 0) != -1 ? 1 : 0;
    if (__real_write(kAccountFd, &gAccount, sizeof gAccount) != sizeof gAccount)
        _exit(99);
}
