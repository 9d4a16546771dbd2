#include "platform/os.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

// The environment is read without a lock, by the C library too, and what was found may be kept.  So its array
// is not changed but exchanged, and no array and no text is ever released; each is there once.
static int assign(const char *assignment) {
    const char *equals = std::strchr(assignment, '=');
    if (equals == nullptr || equals == assignment) {
        errno = EINVAL;
        return -1;
    }
    const std::string name(assignment, equals);
    const bool remains = equals[1] != '\0';
    static std::mutex lock;
    const std::lock_guard guard(lock);
    const char *now = std::getenv(name.c_str());
    if (remains ? now != nullptr && std::strcmp(now, equals + 1) == 0 : now == nullptr)
        return 0;
    static auto &texts = *new std::set<std::string>;
    static auto &arrays = *new std::set<std::vector<const char *>>;
    std::vector<const char *> next;
    for (char **at = environ; at != nullptr && *at != nullptr; ++at)
        if (std::strncmp(*at, assignment, name.size() + 1) != 0)
            next.push_back(*at);
    if (remains)
        next.push_back(texts.insert(assignment).first->c_str());
    next.push_back(nullptr);
    char **array = const_cast<char **>(arrays.insert(std::move(next)).first->data());
    std::atomic_ref(environ).store(array, std::memory_order_release);
    return 0;
}

int _putenv(const char *inp_assignment) {
    try {
        return assign(inp_assignment);
    } catch (const std::bad_alloc &) {
        errno = ENOMEM;
        return -1;
    }
}

char **OS_KeepEnvironment() {
    return environ;
}

void OS_RestoreEnvironment(char **in_kept) {
    std::atomic_ref(environ).store(in_kept, std::memory_order_release);
}

const char *OS_ProgramVariable(const char *inp_name) {
    return secure_getenv(inp_name);
}
