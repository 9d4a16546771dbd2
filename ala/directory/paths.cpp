#include "ala/directory/paths.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "service/system.h"

using namespace qvledger;

__attribute__((format(printf, 1, 2))) static Malloced<char> formatPath(const char *givenFormat, ...) {
    std::va_list values;
    va_start(values, givenFormat);
    const int length = std::vsnprintf(nullptr, 0, givenFormat, values);
    va_end(values);
    if (length < 0)
        return nullptr;
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    Malloced<char> path(static_cast<char *>(std::malloc(size)));
    if (path == nullptr)
        return nullptr;
    va_start(values, givenFormat);
    std::vsnprintf(path.get(), size, givenFormat, values);
    va_end(values);
    return path;
}

Malloced<char> ALA__PathInDirectory(const char *inp_directory, const char *inp_name) {
    return formatPath("%s/%s", inp_directory, inp_name);
}

Malloced<char> ALA__CurrentLogPath(const char *inp_directory, const char *inp_server) {
    return formatPath("%s/%s.current", inp_directory, inp_server);
}

Malloced<char> ALA__DatedLogPath(const char *inp_directory, const char *inp_server,
                                 const ALA_time *inp_date) {
    return formatPath("%s/%s.%.4d%.2d%.2d", inp_directory, inp_server, inp_date->year, inp_date->month,
                      inp_date->day);
}

Malloced<char> ALA__AsidePath(const char *inp_path) {
    return formatPath("%s%s", inp_path, kAside.data());
}

bool ALA__ConvertPath(const char *inp_path, Malloced<char> &outp_converted) {
    std::uint32_t length = 0;
    return FA_ConvertFilePath(inp_path, static_cast<std::uint32_t>(std::strlen(inp_path) + 1),
                              TextOut(outp_converted), &length) == 0;
}
