#include "platform/os.h"

#include <cstdlib>
#include <cstring>

#include "platform/malloced.h"

using namespace qvledger;

// Returns a copy, because the C library changes the array in place.
char **OS_KeepEnvironment() {
    std::size_t count = 0;
    while (_environ[count] != nullptr)
        ++count;
    Malloced<char *> kept;
    if (!resize(kept, (count + 1) * sizeof(char *)))
        return nullptr;
    for (std::size_t i = 0; i < count; ++i)
        kept.get()[i] = _strdup(_environ[i]);
    kept.get()[count] = nullptr;
    return kept.release();
}

// Length of a variable's name with its "="; 0 for the system's variables such as "=C:", which are never
// removed.
static std::size_t nameLength(const char *assignment) {
    const char *equals = std::strchr(assignment, '=');
    return equals == nullptr || equals == assignment ? 0 : static_cast<std::size_t>(equals - assignment) + 1;
}

static bool isAmong(char **assignments, const char *name, std::size_t length) {
    for (char **at = assignments; *at != nullptr; ++at)
        if (_strnicmp(*at, name, length) == 0)
            return true;
    return false;
}

// Removes the variables that are not in `kept`.  Each removal moves the array, so the search starts again.
static void removeOthers(char **kept) {
    for (char **at = _environ; *at != nullptr;) {
        const std::size_t length = nameLength(*at);
        if (length == 0 || isAmong(kept, *at, length)) {
            ++at;
            continue;
        }
        const Malloced<char> removal(_strdup(*at));
        if (removal == nullptr)
            return;
        removal.get()[length] = '\0';
        if (_putenv(removal.get()) != 0)
            return;
        at = _environ;
    }
}

void OS_RestoreEnvironment(char **kept) {
    if (kept == nullptr)
        return;
    removeOthers(kept);
    for (char **at = kept; *at != nullptr; ++at)
        if (nameLength(*at) != 0)
            static_cast<void>(_putenv(*at)); // should not fail: the environment had this text before
}

const char *OS_ProgramVariable(const char *name) {
    return std::getenv(name);
}
