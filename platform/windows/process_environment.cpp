#include "platform/os.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// Returns a copy, because the C library changes the array in place.
char **OS_KeepEnvironment() {
    std::size_t count = 0;
    while (_environ[count] != nullptr)
        ++count;
    auto **kept = static_cast<char **>(std::calloc(count + 1, sizeof(char *)));
    for (std::size_t i = 0; kept != nullptr && i < count; ++i)
        kept[i] = _strdup(_environ[i]);
    return kept;
}

// Returns the variable's name and "="; empty for the system's variables such as "=C:", which never change.
static std::string nameOf(const char *assignment) {
    const char *equals = std::strchr(assignment, '=');
    return equals == nullptr || equals == assignment ? "" : std::string(assignment, equals + 1);
}

void OS_RestoreEnvironment(char **kept) {
    if (kept == nullptr)
        return;
    std::vector<std::string> names; // a copy, because each change moves the array
    for (char **at = _environ; *at != nullptr; ++at)
        names.push_back(nameOf(*at));
    for (const std::string &name : names)
        static_cast<void>(_putenv(name.c_str())); // removes the variable; an empty name is refused
    for (char **at = kept; *at != nullptr; ++at)
        static_cast<void>(_putenv(*at)); // should not fail: the environment had this text before
}

const char *OS_ProgramVariable(const char *name) {
    return std::getenv(name);
}
