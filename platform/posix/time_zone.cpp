#include "platform/os.h"

#include <cerrno>
#include <ctime>

long _timezone = 0;

void _tzset() {
    tzset();
    _timezone = timezone;
}

static int resultOf(const std::tm *converted) {
    return converted != nullptr ? 0 : errno;
}

int gmtime_s(std::tm *fields, const std::time_t *time) {
    return resultOf(gmtime_r(time, fields));
}

int localtime_s(std::tm *fields, const std::time_t *time) {
    return resultOf(localtime_r(time, fields));
}

std::time_t _mkgmtime(std::tm *time) {
    return timegm(time);
}
