#include "ala/directory/paths.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "service/system.h"

using namespace qvledger;

__attribute__((format(printf, 1, 2))) static Malloced<char> formatPath(const char *pattern, ...) {
    std::va_list values;
    va_start(values, pattern);
    const int length = std::vsnprintf(nullptr, 0, pattern, values);
    va_end(values);
    if (length < 0)
        return nullptr;
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    Malloced<char> path(static_cast<char *>(std::malloc(size)));
    if (path == nullptr)
        return nullptr;
    va_start(values, pattern);
    std::vsnprintf(path.get(), size, pattern, values);
    va_end(values);
    return path;
}

Malloced<char> qvledger::pathInDirectory(const char *directory, const char *name) {
    return formatPath("%s/%s", directory, name);
}

Malloced<char> qvledger::currentLogPath(const char *directory, const char *server) {
    return formatPath("%s/%s.current", directory, server);
}

Malloced<char> qvledger::datedLogPath(const char *directory, const char *server, const ALA_time *date) {
    return formatPath("%s/%s.%.4d%.2d%.2d", directory, server, date->year, date->month, date->day);
}

Malloced<char> qvledger::asidePath(const char *path) {
    return formatPath("%s%s", path, kAside.data());
}

bool qvledger::convertPath(const char *path, Malloced<char> &converted) {
    std::uint32_t length = 0;
    return FA_ConvertFilePath(path, static_cast<std::uint32_t>(std::strlen(path) + 1), TextOut(converted),
                              &length) == 0;
}
